#pragma once

#include <QAbstractListModel>
#include <QString>
#include <cstdint>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Platform/CGEvent.h"

namespace tessara {

/// What applications of the simulated desktop received, a line for each thing that a person would
/// call one: a glide, however many steps it has, a way that the pointer went, a button, a key.
///
/// Main thread.
class DeskLog : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")

  public:
    /// Older lines go when there are more.
    static constexpr int capacity = 500;

    using QAbstractListModel::QAbstractListModel;

    /// Adds an event to the last line, where it goes on with what that tells, or as a line of its
    /// own.
    void append(const QString& application, const CGEvent& event);
    Q_INVOKABLE void clear();

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    /// The line's text, as the display role.
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

  private:
    enum class Kind { glide, wheel, motion, other };

    struct Line {
        Kind kind = Kind::other;
        QString application = {};
        /// What an event that is no part of a row says.
        QString what = {};
        std::int64_t steps = 0;
        std::int64_t vertical = 0;
        std::int64_t horizontal = 0;
        bool isOver = false;
    };

    void appendLine(Line line);
    [[nodiscard]] static Line lineOf(const CGEvent& event);
    [[nodiscard]] static bool goesOn(const Line& line, const Line& next);
    /// How far a line's events went, by the texts for either axis.
    [[nodiscard]] static QString wayOf(const Line& line, const QString& upright,
                                       const QString& sideways);
    [[nodiscard]] static QString textOf(const Line& line);

    std::vector<Line> lines_;
};

}  // namespace tessara
