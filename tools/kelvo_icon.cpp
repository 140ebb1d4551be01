// kelvo-icon DRAWING SIZE PICTURE: an icon's drawing (SVG) as a PNG picture of SIZE x SIZE pixels, when Kelvo is built.
#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int size = arguments.size() == 4 ? arguments[2].toInt() : 0;
    if (size <= 0) {
        std::fputs("kelvo-icon DRAWING SIZE PICTURE\n", stderr);
        return 2;
    }
    QSvgRenderer drawing(arguments[1]);
    QImage picture(size, size, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    if (drawing.isValid()) {
        QPainter painter(&picture);
        drawing.render(&painter);
    }
    QImageWriter writer(arguments[3], "png");
    if (drawing.isValid() && writer.write(picture)) return 0;
    std::fprintf(stderr, "kelvo-icon: %s can't be made of %s\n", qPrintable(arguments[3]), qPrintable(arguments[1]));
    return 1;
}
