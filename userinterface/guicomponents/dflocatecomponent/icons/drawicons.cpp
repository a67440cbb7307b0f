// Draws the component's lamp and tick icons: "drawicons <folder>" writes On.png, Off.png and OK.png there.
//
// They are drawn at 64 pixels with rims and strokes that are still wider than a pixel at 16, the smallest size in use.

#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QSaveFile>

#include <cstdio>

namespace {

constexpr int size = 64;

struct GlassColours
{
    QColor bright;
    QColor middle;
    QColor edge;
    int highlightAlpha; // 0..255
};

QImage emptyImage()
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

void fillCircle(QPainter& painter, const QPointF& centre, double radius, const QBrush& brush)
{
    painter.setBrush(brush);
    painter.drawEllipse(centre, radius, radius);
}

QImage drawLamp(const GlassColours& glass)
{
    QImage image = emptyImage();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QPointF centre(size / 2.0, size / 2.0);

    QLinearGradient rim(0, 2, 0, size - 2);
    rim.setColorAt(0, QColor(0x5a, 0x5f, 0x64));
    rim.setColorAt(0.5, QColor(0x2c, 0x2f, 0x33));
    rim.setColorAt(1, QColor(0x14, 0x16, 0x18));
    fillCircle(painter, centre, 30, rim);

    constexpr double glassRadius = 24;
    QRadialGradient body(centre, glassRadius, QPointF(26, 24));
    body.setColorAt(0, glass.bright);
    body.setColorAt(0.55, glass.middle);
    body.setColorAt(1, glass.edge);
    fillCircle(painter, centre, glassRadius, body);

    QLinearGradient highlight(0, 11, 0, 31);
    highlight.setColorAt(0, QColor(255, 255, 255, glass.highlightAlpha));
    highlight.setColorAt(1, QColor(255, 255, 255, 0));
    painter.setBrush(highlight);
    painter.drawEllipse(QPointF(size / 2.0, 21), 15.5, 10.5);
    return image;
}

QImage drawTick()
{
    QImage image = emptyImage();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath stroke(QPointF(10, 35));
    stroke.lineTo(25, 51);
    stroke.lineTo(54, 13);
    QLinearGradient green(0, 8, 0, 56);
    green.setColorAt(0, QColor(0x12, 0x86, 0x2a));
    green.setColorAt(1, QColor(0x05, 0x5c, 0x17));
    painter.strokePath(stroke, QPen(green, 12, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    return image;
}

bool write(const QImage& image, const QString& path)
{
    QBuffer png;
    QSaveFile file(path);
    // Without a buffer, because what a full disk does not take of one is left out without a word.
    if (image.save(&png, "PNG") && file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
        file.write(png.data()) == png.size() && file.commit())
        return true;
    std::fprintf(stderr, "%s: the icon cannot be written: %s.\n", qPrintable(path), qPrintable(file.errorString()));
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: drawicons <folder>\n", stderr);
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    const QString folder = QString::fromLocal8Bit(argv[1]) + QLatin1Char('/');
    const GlassColours lit{QColor(0xd2, 0xff, 0xb8), QColor(0x3f, 0xe0, 0x32), QColor(0x0b, 0x8f, 0x16), 215};
    const GlassColours dark{QColor(0x8c, 0x91, 0x96), QColor(0x66, 0x6b, 0x70), QColor(0x42, 0x46, 0x4a), 110};
    const bool done = write(drawLamp(lit), folder + QStringLiteral("On.png")) &&
                      write(drawLamp(dark), folder + QStringLiteral("Off.png")) &&
                      write(drawTick(), folder + QStringLiteral("OK.png"));
    return done ? 0 : 1;
}
