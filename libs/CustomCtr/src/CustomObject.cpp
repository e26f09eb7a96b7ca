#include "CustomObject.h"

#include <QColor>
#include <QWidget>

#include <array>
#include <vector>

namespace {

constexpr int kStateCount = 3;
// Order of the sides inside StateStyle::borderColors.
enum Side { Top = 0, Right = 1, Bottom = 2, Left = 3 };
constexpr std::array<const char*, 4> kSideNames{"top", "right", "bottom", "left"};
constexpr std::array<const char*, kStateCount> kPseudoStates{"", ":hover", ":pressed"};

struct StateStyle
{
    std::array<QString, 4> borderColors;
    int borderWidth = 1;
    QString fontColor;
    int fontSize = 0;
    QString backgroundColor;
    QString backgroundImage;

    QStringList declarations() const
    {
        QStringList out;
        for (int side = Top; side <= Left; ++side) {
            if (!borderColors[side].isEmpty())
                out << QStringLiteral("border-%1: %2px solid %3")
                           .arg(QLatin1String(kSideNames[side]))
                           .arg(borderWidth)
                           .arg(borderColors[side]);
        }
        if (!fontColor.isEmpty())
            out << QStringLiteral("color: %1").arg(fontColor);
        if (fontSize > 0)
            out << QStringLiteral("font-size: %1px").arg(fontSize);
        if (!backgroundColor.isEmpty())
            out << QStringLiteral("background-color: %1").arg(backgroundColor);
        if (!backgroundImage.isEmpty())
            out << QStringLiteral("border-image: url(\"%1\") 0 0 0 0 stretch stretch").arg(backgroundImage);
        return out;
    }
};

bool validState(int state)
{
    return state >= 0 && state < kStateCount;
}

// Only colour names and #hex forms that QColor accepts: anything else could
// end the declaration and inject rules.
bool validColor(const QString& color)
{
    return !color.isEmpty() && QColor::isValidColor(color) && !color.contains(QLatin1Char(';'));
}

// The path goes inside a quoted url(); quotes, backslashes and control
// characters would break out of it.
bool validImagePath(const QString& path)
{
    for (const QChar c : path) {
        if (c == QLatin1Char('"') || c == QLatin1Char('\\') || c.category() == QChar::Other_Control)
            return false;
    }
    return true;
}

std::vector<Side> sidesOf(int edge)
{
    switch (edge) {
    case CustomObject::EdgeTop: return {Top};
    case CustomObject::EdgeBottom: return {Bottom};
    case CustomObject::EdgeTopBottom: return {Top, Bottom};
    case CustomObject::EdgeAll: return {Top, Right, Bottom, Left};
    case CustomObject::EdgeLeft: return {Left};
    case CustomObject::EdgeRight: return {Right};
    case CustomObject::EdgeLeftRight: return {Left, Right};
    default: return {};
    }
}

} // namespace

struct CustomObject::Impl
{
    QWidget* const host;
    const QString selector;
    QString baseSheet;
    std::array<StateStyle, kStateCount> states;
};

CustomObject::CustomObject(QWidget* host, const QString& selector)
    : m_impl(new Impl{host, selector, {}, {}})
{
}

CustomObject::~CustomObject() = default;

bool CustomObject::cSetBorderColor(const QString& color, int edge, int state)
{
    const std::vector<Side> sides = sidesOf(edge);
    if (!validState(state) || sides.empty() || !validColor(color))
        return false;
    for (const Side side : sides)
        m_impl->states[state].borderColors[side] = color;
    cApplyStyle();
    return true;
}

bool CustomObject::cSetBorderWidth(int width, int state)
{
    if (!validState(state) || width < 0)
        return false;
    m_impl->states[state].borderWidth = width;
    cApplyStyle();
    return true;
}

bool CustomObject::cSetFontColor(const QString& color, int state)
{
    if (!validState(state) || !validColor(color))
        return false;
    m_impl->states[state].fontColor = color;
    cApplyStyle();
    return true;
}

bool CustomObject::cSetFontSize(int size, int state)
{
    if (!validState(state) || size < 1)
        return false;
    m_impl->states[state].fontSize = size;
    cApplyStyle();
    return true;
}

bool CustomObject::cSetBackgroundColor(const QString& color, int state)
{
    if (!validState(state) || !validColor(color))
        return false;
    m_impl->states[state].backgroundColor = color;
    cApplyStyle();
    return true;
}

bool CustomObject::cSetBackgroundImage(const QString& path, int state)
{
    if (!validState(state) || !validImagePath(path))
        return false;
    m_impl->states[state].backgroundImage = path;
    cApplyStyle();
    return true;
}

QString CustomObject::cStyleSheet() const
{
    QString out;
    for (int state = 0; state < kStateCount; ++state) {
        const QStringList declarations = m_impl->states[state].declarations();
        if (declarations.isEmpty())
            continue;
        out += m_impl->selector + QLatin1String(kPseudoStates[state]) + QStringLiteral(" { ")
            + declarations.join(QStringLiteral("; ")) + QStringLiteral("; }\n");
    }
    return out;
}

void CustomObject::cSetBaseStyleSheet(const QString& sheet)
{
    m_impl->baseSheet = sheet;
    cApplyStyle();
}

void CustomObject::cApplyStyle()
{
    QStringList parts;
    for (const QString& part : {m_impl->baseSheet, cStyleSheet()}) {
        if (!part.isEmpty())
            parts << part;
    }
    const QString sheet = parts.join(QLatin1Char('\n'));
    // Setting an identical sheet would still re-polish the whole subtree.
    if (m_impl->host->styleSheet() != sheet)
        m_impl->host->setStyleSheet(sheet);
}
