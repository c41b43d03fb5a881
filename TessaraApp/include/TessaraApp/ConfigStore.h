#pragma once

#include <QObject>
#include <QUrl>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tessara {

class FileSystem;
class WallClock;
struct Config;

/// Puts the user's document on disk and gets it back. No setting is lost to a failure of this
/// program: a file that cannot be understood is neither overwritten nor deleted, and while there is
/// one, nothing is saved until the user decides. What the document means is not known here, and
/// nothing is saved by itself.
///
/// | In the document's folder | What it is |
/// |---|---|
/// | config.json | the document |
/// | config.previous.json | the document before the last save that changed it |
/// | config-{stamp}.unreadable.json | one that could not be understood; never deleted |
///
/// The stamp is the local time as yyyy-MM-dd-HHmmss. One program at a time saves; what another one
/// writes between two saves is replaced by the next, and kept as the previous or the unreadable.
///
/// Main executor only; files are read and written in place, which takes as long as the disk does.
/// Nothing is thrown: failures are told by the fields. A field that is given an equal value tells
/// nobody.
class ConfigStore : public QObject {
    Q_OBJECT

  public:
    /// Why the file is not in use.
    struct Problem {
        /// The file was read, and is no valid document.
        struct Corrupt {
            std::string detail;  ///< what is wrong with it, in a sentence
            bool operator==(const Corrupt&) const = default;
        };
        /// A later version of the program wrote it.
        struct NewerSchema {
            std::int64_t found = 0;      ///< its version of the format
            std::int64_t supported = 0;  ///< the newest that this program knows
            bool operator==(const NewerSchema&) const = default;
        };
        /// It is there, or may be, and could not be read.
        struct Unreadable {
            std::string detail;  ///< the system's words, with the path
            bool operator==(const Unreadable&) const = default;
        };

        std::variant<Corrupt, NewerSchema, Unreadable> value;

        /// What happened, in one line for the user.
        [[nodiscard]] std::string headline() const;
        /// What the program does about it, and what the user can do.
        [[nodiscard]] std::string explanation() const;

        bool operator==(const Problem&) const = default;
    };

    /// The document's name in its folder, and that of the version before the last save.
    static constexpr std::string_view fileName = "config.json";
    static constexpr std::string_view previousFileName = "config.previous.json";

    /// A larger file is not read, and a larger document not written.
    static constexpr std::size_t maximumFileSizeInBytes = std::size_t{32} << 20;

    /// `path` is the document's absolute path; its folder need not exist. Reads nothing yet. Both
    /// services outlive this.
    ConfigStore(FileSystem& files, const WallClock& wallClock, std::string path);

    /// Where the document is kept.
    [[nodiscard]] QUrl fileURL() const;

    /// Nothing when all is well; as long as there is something, nothing is saved.
    [[nodiscard]] const std::optional<Problem>& problem() const { return problem_; }

    /// Where the last unreadable file was put in this run; later saves do not change it.
    [[nodiscard]] const std::optional<QUrl>& archivedFileURL() const { return archivedFileURL_; }

    /// Why the last save or move failed, in the system's words; nothing when the last save went
    /// well.
    [[nodiscard]] const std::optional<std::string>& lastSaveError() const { return lastSaveError_; }

    /// The document of the file; the factory's when there is no file, or when it cannot be used,
    /// which `problem` then tells. Writes nothing.
    [[nodiscard]] Config load();

    /// Makes `config` the file's contents, in one step; a failure leaves the old file and is told
    /// by `lastSaveError`. The document that it replaces is kept beside it, as far as that can be
    /// written, under `previousFileName`. Should the file meanwhile have become one that cannot be
    /// understood, a copy of it is put aside first; one that cannot be read is not replaced. Does
    /// nothing at all while there is a `problem`.
    void save(const Config& config);

    /// Renames the file, to a name that tells the moment, and clears `problem`; with no file, only
    /// the latter. False when the file could not be moved: then `lastSaveError` says why, and
    /// `problem` stands. Writes no document.
    [[nodiscard]] bool startFresh();

    /// Forgets the problem, for a `load` that is to follow.
    void clearProblem();

  Q_SIGNALS:
    void problemChanged();
    void archivedFileURLChanged();
    void lastSaveErrorChanged();

  private:
    void setProblem(std::optional<Problem> problem);
    void setArchivedPath(const std::string& path);
    void setLastSaveError(std::optional<std::string> error);
    /// Keeps what the file holds before it is replaced by `next`; an error when it would be lost.
    std::optional<std::string> keepCurrent(std::string_view next);
    [[nodiscard]] std::string archivePath() const;

    FileSystem& files_;
    const WallClock& wallClock_;
    const std::string path_;
    std::optional<Problem> problem_;
    std::optional<QUrl> archivedFileURL_;
    std::optional<std::string> lastSaveError_;
};

}  // namespace tessara
