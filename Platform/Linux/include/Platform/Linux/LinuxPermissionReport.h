#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tessara {

struct InputDeviceMatch;

/// Which of the system's nodes the program may use, and so what it lacks. It only looks: no node is
/// opened, and nothing is asked of the user. It says how things stood when it was read; that a node
/// may be opened does not say that nobody else has taken it.
struct LinuxPermissionReport {
    /// A device node.
    struct Node {
        std::string path;       ///< "/dev/input/event5"
        bool isUsable = false;  ///< by the effective user, in the way that its list asks for
        bool operator==(const Node&) const = default;
    };

    enum class UinputAccess : std::uint8_t {
        granted,
        refused,  ///< the node is there and not writable
        missing,  ///< there is no node: the kernel's module is not loaded
    };

    /// Of the kernel's device for virtual mice and keyboards.
    UinputAccess uinput = UinputAccess::missing;
    /// The mouse's input nodes, which have to be readable.
    std::vector<Node> inputNodes;
    /// The nodes for the mouse's own protocol, which have to be readable and writable.
    std::vector<Node> hidNodes;
    /// The input nodes of keyboards, but for the mouse's own and virtual ones. They may be read for
    /// the modifiers that are held; the program does without where they may not.
    std::vector<Node> keyboards;
    /// Some input node of whatever device is readable.
    bool readsAnyInput = false;
    /// The rule stands that hands the mouse's nodes to who sits at the computer: a file of its name
    /// is in one of the folders that udev reads.
    bool hasRule = false;

    /// Whether the program can post events.
    [[nodiscard]] bool canPost() const;
    /// Whether it can listen to the mouse. Without a mouse, whether it could if one came.
    [[nodiscard]] bool canListen() const;
    /// Whether it can speak with the mouse. Without a mouse as above.
    [[nodiscard]] bool canSpeak() const;
    /// What is missing for each of the three, a sentence for the user each; empty when nothing is.
    [[nodiscard]] std::vector<std::string> postingProblems() const;
    [[nodiscard]] std::vector<std::string> listeningProblems() const;
    [[nodiscard]] std::vector<std::string> speakingProblems() const;
    /// All of them, in this order.
    [[nodiscard]] std::vector<std::string> problems() const;
    /// Whether the program knows of every modifier key that is held.
    [[nodiscard]] bool canSeeModifiers() const;
    /// What does less than it might for want of a right that the program does without, a sentence
    /// for the user each.
    [[nodiscard]] std::vector<std::string> limitations() const;

    /// Where to look, and how.
    struct System {
        /// Ahead of every path; empty for the system itself.
        std::string root;
        /// Whether the effective user has these rights, as access(2) names them. By default the
        /// kernel is asked.
        std::function<bool(const std::string& path, int mode)> hasAccess;
    };

    /// Looks for mice of these numbers. Some hundred system calls.
    [[nodiscard]] static LinuxPermissionReport read(const std::vector<InputDeviceMatch>& mice,
                                                    const System& system);

    bool operator==(const LinuxPermissionReport&) const = default;
};

}  // namespace tessara
