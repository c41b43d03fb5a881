#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tessara {

struct InputDeviceMatch;

/// Which of the system's nodes the program may use, and so what it lacks. It only looks: nothing is
/// opened, and nothing is asked of the user.
struct LinuxPermissionReport {
    /// A device node of the mouse.
    struct Node {
        std::string path;
        bool isUsable = false;
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
    /// Some input node of whatever device is readable.
    bool readsAnyInput = false;
    /// The rule stands that hands the mouse's nodes to who sits at the computer.
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

    /// Where to look, and how.
    struct System {
        /// Ahead of every path; empty for the system itself.
        std::string root;
        /// Whether the effective user has these rights, as access(2) names them. By default the
        /// kernel is asked.
        std::function<bool(const std::string& path, int mode)> hasAccess;
    };

    /// Looks for mice of these numbers. Some dozens of system calls.
    [[nodiscard]] static LinuxPermissionReport read(const std::vector<InputDeviceMatch>& mice,
                                                    const System& system);

    bool operator==(const LinuxPermissionReport&) const = default;
};

}  // namespace tessara
