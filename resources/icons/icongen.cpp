// Draws the tool's icons at build time, so that the artwork lives as code and
// the resource bundle is reproducible. Usage: quorvex-icongen <output folder>

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <cstdio>
#include <functional>

namespace {

const QColor kAccent(0xf7, 0x69, 0x00);
const QColor kInk(0x33, 0x3a, 0x45);

// The tool: a code reader's window with a 2-D code inside, on the accent.
void drawToolIcon(QPainter& p, int size)
{
    const qreal s = size;
    p.setRenderHint(QPainter::Antialiasing);
    QPainterPath body;
    body.addRoundedRect(QRectF(s * 0.04, s * 0.04, s * 0.92, s * 0.92), s * 0.2, s * 0.2);
    p.fillPath(body, kAccent);

    const QRectF window(s * 0.2, s * 0.2, s * 0.6, s * 0.6);
    p.setPen(QPen(Qt::white, s * 0.06, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const qreal c = s * 0.14;  // corner bracket length
    for (int corner = 0; corner < 4; ++corner) {
        const qreal x = corner % 2 ? window.right() : window.left();
        const qreal y = corner / 2 ? window.bottom() : window.top();
        const qreal dx = corner % 2 ? -c : c;
        const qreal dy = corner / 2 ? -c : c;
        p.drawLine(QPointF(x, y), QPointF(x + dx, y));
        p.drawLine(QPointF(x, y), QPointF(x, y + dy));
    }
    // A small fixed pattern of modules, like a tiny matrix code.
    static const char* const modules[] = {"11010", "10011", "01101", "11001", "10111"};
    const qreal cell = s * 0.3 / 5;
    const QPointF origin(s * 0.35, s * 0.35);
    for (int row = 0; row < 5; ++row)
        for (int col = 0; col < 5; ++col)
            if (modules[row][col] == '1')
                p.fillRect(QRectF(origin.x() + col * cell, origin.y() + row * cell, cell, cell), Qt::white);
}

// Help: a question mark in a ring, drawn for the dark-on-light title bar.
void drawHelpIcon(QPainter& p, int size)
{
    const qreal s = size;
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(kInk, s * 0.08));
    p.drawEllipse(QRectF(s * 0.12, s * 0.12, s * 0.76, s * 0.76));
    QFont font;
    font.setBold(true);
    font.setPixelSize(int(s * 0.5));
    p.setFont(font);
    p.drawText(QRectF(0, 0, s, s * 1.02), Qt::AlignCenter, QStringLiteral("?"));
}

bool render(const QString& path, int size, const std::function<void(QPainter&, int)>& draw)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        draw(painter, size);
    }
    QDir().mkpath(path.left(path.lastIndexOf('/')));
    if (!image.save(path)) {
        std::fprintf(stderr, "icongen: cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: quorvex-icongen <output folder>\n");
        return 2;
    }
    const QString out = QString::fromLocal8Bit(argv[1]);
    bool ok = render(out + "/tools/DriverTool.png", 64, drawToolIcon);
    ok = render(out + "/tools/DriverTool.ico", 48, drawToolIcon) && ok;
    ok = render(out + "/button/icon_helpdoc.png", 24, drawHelpIcon) && ok;
    // The desktop's copies, one per size of the hicolor theme, drawn at each
    // size rather than scaled so that small ones stay sharp.
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        ok = render(QStringLiteral("%1/hicolor/%2x%2/apps/quorvex.png").arg(out).arg(size), size, drawToolIcon) && ok;
    return ok ? 0 : 1;
}
