#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

namespace tessara {

class AppModel;

/// The menu of the program's tray item as data: its lines in order, and what each one does. It
/// knows of no toolkit and of no tray; whoever shows the menu follows `changed`.
///
/// Main executor only. `changed` comes once for each change that shows, and never otherwise.
class MenuBarContent : public QObject {
    Q_OBJECT

  public:
    /// What a line is there for. A line that only tells something, and one that only separates,
    /// has none.
    enum class Command {
        none,
        pause,
        startAtLogin,
        finishSettingUp,
        openSettings,
        checkForUpdates,
        quit
    };

    struct Item {
        /// What choosing the line does; `none` for a line that cannot be chosen.
        Command command = Command::none;
        /// Empty for a separator.
        QString text;
        /// For a line that can be on or off.
        std::optional<bool> isChecked = {};
        /// A key sequence in its portable text form; empty for none.
        QString shortcut = {};

        [[nodiscard]] bool isSeparator() const { return text.isEmpty(); }
        bool operator==(const Item&) const = default;
    };

    /// What the menu asks of the program around it.
    struct Program {
        /// Each opens its window, or brings it forward when it is open.
        std::function<void()> showOnboarding;
        std::function<void()> showSettings;
        /// Ends the program; the model is stopped already.
        std::function<void()> terminate;
    };

    /// The model outlives this, and all of `program` can be called for as long as this lives.
    MenuBarContent(AppModel& model, Program program);

    /// The lines from top to bottom. The first tells how the program stands, and what follows
    /// depends on that: the way back to the onboarding is there while a permission is missing.
    [[nodiscard]] const std::vector<Item>& items() const { return items_; }

    /// The symbol of the tray item, and what it is called: "Tessara — {headline}".
    [[nodiscard]] QString symbol() const { return symbol_; }
    [[nodiscard]] QString label() const { return label_; }

    /// Does what the line with this command is there for. A line with a mark turns over what the
    /// mark stands for; where the system refuses that, the mark stays as it was.
    void run(Command command);

  Q_SIGNALS:
    void changed();

  private:
    void refresh();
    [[nodiscard]] std::vector<Item> currentItems() const;

    AppModel& model_;
    const Program program_;
    std::vector<Item> items_;
    QString symbol_;
    QString label_;
};

}  // namespace tessara
