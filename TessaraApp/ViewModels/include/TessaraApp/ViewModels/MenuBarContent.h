#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

namespace tessara {

class AppModel;

/// The menu of the program's tray item as data: its lines in order, and what each one does.
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
        std::function<void()> showOnboarding;
        std::function<void()> showSettings;
        /// Ends the program; the model is stopped already.
        std::function<void()> terminate;
    };

    /// The model outlives this.
    MenuBarContent(AppModel& model, Program program);

    [[nodiscard]] const std::vector<Item>& items() const { return items_; }

    /// The symbol of the tray item, and what it is called: "Tessara — {headline}".
    [[nodiscard]] QString symbol() const { return symbol_; }
    [[nodiscard]] QString label() const { return label_; }

    /// Does what the line with this command is there for. A line with a mark turns it over.
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
