#pragma once

#include <QColor>
#include <QObject>

#include <QtQml/qqmlregistration.h>

namespace tessara {

/// The colours of one of the two appearances, named by what they are for and not by how they look.
/// Text stands out from what it is written on by 4.5 to 1 or more (WCAG 2.1, level AA).
struct ThemeColors {
    Q_GADGET
    QML_VALUE_TYPE(themeColors)

    /// What everything stands on, and the cards and fields on top of it.
    Q_PROPERTY(QColor window MEMBER window CONSTANT)
    Q_PROPERTY(QColor card MEMBER card CONSTANT)
    Q_PROPERTY(QColor field MEMBER field CONSTANT)
    Q_PROPERTY(QColor fieldHovered MEMBER fieldHovered CONSTANT)
    Q_PROPERTY(QColor fieldPressed MEMBER fieldPressed CONSTANT)
    /// Lines between things, around fields, and the empty part of a track.
    Q_PROPERTY(QColor separator MEMBER separator CONSTANT)
    Q_PROPERTY(QColor border MEMBER border CONSTANT)
    Q_PROPERTY(QColor track MEMBER track CONSTANT)
    Q_PROPERTY(QColor knob MEMBER knob CONSTANT)
    Q_PROPERTY(QColor text MEMBER text CONSTANT)
    Q_PROPERTY(QColor secondaryText MEMBER secondaryText CONSTANT)
    /// The one colour that draws the eye; what is written on it; a wash of it under the pointer.
    Q_PROPERTY(QColor accent MEMBER accent CONSTANT)
    Q_PROPERTY(QColor accentPressed MEMBER accentPressed CONSTANT)
    Q_PROPERTY(QColor onAccent MEMBER onAccent CONSTANT)
    Q_PROPERTY(QColor accentWash MEMBER accentWash CONSTANT)
    /// The four levels of a status.
    Q_PROPERTY(QColor good MEMBER good CONSTANT)
    Q_PROPERTY(QColor waiting MEMBER waiting CONSTANT)
    Q_PROPERTY(QColor bad MEMBER bad CONSTANT)
    Q_PROPERTY(QColor off MEMBER off CONSTANT)

  public:
    QColor window, card, field, fieldHovered, fieldPressed;
    QColor separator, border, track, knob;
    QColor text, secondaryText;
    QColor accent, accentPressed, onAccent, accentWash;
    QColor good, waiting, bad, off;

    static const ThemeColors& light();
    static const ThemeColors& dark();

    bool operator==(const ThemeColors&) const = default;
};

}  // namespace tessara
