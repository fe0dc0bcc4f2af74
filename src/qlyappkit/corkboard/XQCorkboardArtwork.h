#pragma once
// The board's artwork, drawn in code: a tileable cork texture, the pin, and blurred card shadows
// cached per card size (a board has a handful of card sizes, so shadows are blurred once each).
#include <QColor>
#include <QHash>
#include <QImage>
#include <QSize>

namespace qly {

class XQCorkboardArtwork {
public:
    /// A square tile of cork: warm brown with darker and lighter granules, seamless when repeated.
    static const QImage& corkPattern();
    /// The pin's head with its shadow, in the given colour (drawn once per colour).
    const QImage& pinImage(const QColor& color);
    /// The size the pin takes on a card.
    static QSize pinSize() { return QSize(20, 24); }
    /// A soft shadow for a card of the given size (the picture is larger by the blur on every side).
    const QImage& cardShadow(QSize cardSize, double intensity, bool rounded);
    /// The margin by which a shadow picture exceeds its card on every side.
    static int shadowMargin();
    /// Forgets the cached shadows (after a layout pass or a change of intensity).
    void clearShadows() { m_shadows.clear(); }

private:
    QHash<quint64, QImage> m_shadows;
    QHash<QRgb, QImage> m_pins;
};

/// A box blur run three times (close to a Gaussian) over an ARGB32 premultiplied image, in place.
void XQBlurImage(QImage& image, int radius);

} // namespace qly
