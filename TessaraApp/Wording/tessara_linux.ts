<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- What the program says on Linux where its own words would be untrue there: names of another system,
     of its settings and of its keys. Nothing else stands here. -->
<TS version="2.1" language="en_US">
<context>
    <name>MenuBarStatus</name>
    <message>
        <source>Missing: Input Monitoring</source>
        <translation>Missing: Mouse Access</translation>
    </message>
    <message>
        <source>Missing: Accessibility</source>
        <translation>Missing: Input Control</translation>
    </message>
    <message>
        <source>Missing: Input Monitoring and Accessibility</source>
        <translation>Missing: Mouse Access and Input Control</translation>
    </message>
    <message>
        <source>Your mouse behaves exactly as macOS ships it</source>
        <translation>Your mouse behaves exactly as it does without Tessara</translation>
    </message>
</context>
<context>
    <name>tessara::DeskModel</name>
    <message>
        <source>Input Monitoring granted</source>
        <translation>Mouse Access granted</translation>
    </message>
    <message>
        <source>Accessibility granted</source>
        <translation>Input Control granted</translation>
    </message>
</context>
<context>
    <name>tessara::LaunchAtLogin</name>
    <message>
        <source>Tessara will not start on its own. Your mouse forgets its DPI, report rate and wheel mode every time it is unplugged or the Mac reboots, so they will only come back once you open Tessara.</source>
        <translation>Tessara will not start on its own. Your mouse forgets its DPI, report rate and wheel mode every time it is unplugged or the computer reboots, so they will only come back once you open Tessara.</translation>
    </message>
    <message>
        <source>macOS is waiting for you to allow Tessara in System Settings › General › Login Items.</source>
        <translation>Your desktop is waiting for you to allow Tessara among the programs that start when you log in.</translation>
    </message>
    <message>
        <source>macOS cannot find Tessara&apos;s login item. Move Tessara.app to your Applications folder and try again.</source>
        <translation>Tessara could not find itself among the installed programs. Install it and try again.</translation>
    </message>
</context>
<context>
    <name>tessara::OnboardingViewModel</name>
    <message>
        <source>The scroll wheel glides instead of jumping, especially when ⌘ + wheel is zooming a canvas.</source>
        <translation>The scroll wheel glides instead of jumping, especially when Ctrl + wheel is zooming a canvas.</translation>
    </message>
    <message>
        <source>Nothing leaves your Mac. Tessara has no account, no telemetry and no background helper.</source>
        <translation>Nothing leaves your computer. Tessara has no account, no telemetry and no background helper.</translation>
    </message>
    <message>
        <source>macOS needs to grant Tessara two permissions before any of that can work. The next two steps explain what each one is for — in plain terms — and take you straight to the right page in System Settings.</source>
        <translation>Your computer needs to grant Tessara two permissions before any of that can work. The next two steps explain what each one is for — in plain terms — and show you how to grant it.</translation>
    </message>
    <message>
        <source>Your mouse sends one big jump per wheel click, and Tessara&apos;s whole job is to replace that jump with a smooth glide. To do that it has to see the click arrive. Input Monitoring is the macOS permission that allows an app to watch input devices.</source>
        <translation>Your mouse sends one big jump per wheel click, and Tessara&apos;s whole job is to replace that jump with a smooth glide. To do that it has to see the click arrive. Mouse Access is the permission to read the input devices of this computer.</translation>
    </message>
    <message>
        <source>It is also what lets Tessara talk to the mouse itself to read and set DPI — your Logitech mouse presents part of itself as a keyboard, so macOS puts that behind the same permission.</source>
        <translation>It is also what lets Tessara talk to the mouse itself to read and set DPI — that goes through a device of its own, so Linux asks for the permission to open that one, too.</translation>
    </message>
    <message>
        <source>System Settings will open on the right page. Find Tessara in the list and switch it on. You may be asked for your password, and macOS may ask you to quit and reopen Tessara.</source>
        <translation>Tessara shows which devices it may not open yet, and the one command that changes it. You may be asked for an administrator&apos;s password.</translation>
    </message>
    <message>
        <source>macOS is currently refusing Tessara access to the mouse hardware. Switch Tessara on in the list, then quit and reopen it.</source>
        <translation>Linux is currently refusing Tessara access to the mouse hardware. Grant it with the command, then plug the mouse in again.</translation>
    </message>
    <message>
        <source>macOS has not been asked about the mouse hardware yet. That decision happens the first time Tessara opens the mouse, once this permission is on.</source>
        <translation>Tessara has not tried to open the mouse hardware yet. That happens once this permission is on and the mouse is plugged in.</translation>
    </message>
    <message>
        <source>Input Monitoring</source>
        <translation>Mouse Access</translation>
    </message>
    <message>
        <source>Seeing an event is not the same as changing one. Accessibility is the permission that lets Tessara replace the wheel click it swallowed with the smooth scroll it built, and lets a mouse button type the keyboard shortcut you bound to it.</source>
        <translation>Seeing an event is not the same as changing one. Input Control is the permission that lets Tessara replace the wheel click it swallowed with the smooth scroll it built, and lets a mouse button type the keyboard shortcut you bound to it.</translation>
    </message>
    <message>
        <source>System Settings will open on the right page. Find Tessara in the list and switch it on.</source>
        <translation>Tessara shows which device it may not open yet, and the one command that changes it.</translation>
    </message>
    <message>
        <source>Accessibility</source>
        <translation>Input Control</translation>
    </message>
    <message>
        <source>Open %1 Settings</source>
        <translation>Show What %1 Needs</translation>
    </message>
    <message>
        <source>Tessara is watching for the switch and will move on by itself.</source>
        <translation>Tessara is watching for the permission and will move on by itself.</translation>
    </message>
    <message>
        <source>Tessara never pops up a permission dialog on its own — that would interrupt whatever you were doing. It only ever opens the page and waits.</source>
        <translation>Tessara never pops up a permission dialog on its own — that would interrupt whatever you were doing. It only ever shows what is missing and waits.</translation>
    </message>
    <message>
        <source>Tessara lives in the menu bar. Click its icon for a quick pause, or open Settings to tune the wheel, bind your buttons and set up per-app profiles.</source>
        <translation>Tessara lives in the system tray. Click its icon for a quick pause, or open Settings to tune the wheel, bind your buttons and set up per-app profiles.</translation>
    </message>
    <message>
        <source>macOS refused: %1</source>
        <translation>Your desktop refused: %1</translation>
    </message>
    <message>
        <source>You can close this and come back later — the menu bar icon will keep telling you something is missing.</source>
        <translation>You can close this and come back later — the tray icon will keep telling you something is missing.</translation>
    </message>
</context>
<context>
    <name>tessara::ScrollPageModel</name>
    <message>
        <source>In Photoshop, Figma and Miro, ⌘ + wheel is zoom, and that is where the staircase is worst. Pick a modifier here if you want ordinary document scrolling left exactly as macOS does it and only zoom smoothed.</source>
        <translation>In Figma, Miro and most drawing programs, Ctrl + wheel is zoom, and that is where the staircase is worst. Pick a modifier here if you want ordinary document scrolling left exactly as your desktop does it and only zoom smoothed.</translation>
    </message>
    <message>
        <source>Only while ⌘ Command is held</source>
        <translation>Only while Super is held</translation>
    </message>
    <message>
        <source>Only while ⌥ Option is held</source>
        <translation>Only while Alt is held</translation>
    </message>
    <message>
        <source>Only while ⌃ Control is held</source>
        <translation>Only while Ctrl is held</translation>
    </message>
    <message>
        <source>Only while ⇧ Shift is held</source>
        <translation>Only while Shift is held</translation>
    </message>
    <message>
        <source>Your mouse reports one big jump per wheel click. With this on, Tessara swallows that jump and plays it back as a short, smooth glide — the way a trackpad scrolls. Turn it off and the wheel behaves exactly as macOS ships it.</source>
        <translation>Your mouse reports one big jump per wheel click. With this on, Tessara swallows that jump and plays it back as a short, smooth glide — the way a trackpad scrolls. Turn it off and the wheel behaves exactly as it does without Tessara.</translation>
    </message>
    <message>
        <source>How far one click of the wheel moves the page, before acceleration. 120 points is roughly what macOS does for three lines of text. Higher means each click covers more ground.</source>
        <translation>How far one click of the wheel moves the page, before acceleration. 50 points is one plain wheel click, about three lines of text in most programs. Higher means each click covers more ground.</translation>
    </message>
    <message>
        <source>How often Tessara emits a step of the glide. 8 ms is about 120 per second, which matches ProMotion displays. Raising it costs less CPU and looks choppier.</source>
        <translation>How often Tessara emits a step of the glide. 8 ms is about 120 per second, which matches fast displays. Raising it costs less CPU and looks choppier.</translation>
    </message>
</context>
<context>
    <name>tessara::ScrollPreviewModel</name>
    <message>
        <source>Smooth scrolling is off for this profile, so a wheel click is passed to macOS exactly as your mouse sent it.</source>
        <translation>Smooth scrolling is off for this profile, so a wheel click is passed to your programs exactly as your mouse sent it.</translation>
    </message>
    <message>
        <source>Tessara is not allowed to touch your input yet, so the panel above scrolls the way macOS does. Finish the permission setup and it will change under your hand.</source>
        <translation>Tessara is not allowed to touch your input yet, so the panel above scrolls the way it does without Tessara. Finish the permission setup and it will change under your hand.</translation>
    </message>
    <message>
        <source>Tessara is paused, so this scrolls the way macOS does.</source>
        <translation>Tessara is paused, so this scrolls the way it does without Tessara.</translation>
    </message>
</context>
<context>
    <name>tessara::SettingsViewModel</name>
    <message>
        <source>Show In Finder</source>
        <translation>Show In File Manager</translation>
    </message>
    <message>
        <source>Everything on these pages is saved, but nothing takes effect until macOS grants Tessara permission.</source>
        <translation>Everything on these pages is saved, but nothing takes effect until your computer grants Tessara permission.</translation>
    </message>
    <message>
        <source>Your mouse behaves exactly as macOS ships it. Changes you make here are saved and take effect the moment you resume.</source>
        <translation>Your mouse behaves exactly as it does without Tessara. Changes you make here are saved and take effect the moment you resume.</translation>
    </message>
</context>
</TS>
