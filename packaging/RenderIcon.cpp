// Renders the program's SVG icon as a PNG of one size, at build time, so
// the hicolor sizes always match the drawing.
//   orrery-render-icon ICON.svg SIZE OUT.png
#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char* argv[]) {
  if (argc != 4) {
    std::fputs("usage: orrery-render-icon ICON.svg SIZE OUT.png\n", stderr);
    return 2;
  }
  QSvgRenderer svg(QString::fromLocal8Bit(argv[1]));
  const int size = QString::fromLatin1(argv[2]).toInt();
  if (!svg.isValid() || size <= 0) {
    std::fprintf(stderr, "orrery-render-icon: cannot render %s at %s\n", argv[1], argv[2]);
    return 1;
  }
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  {
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    svg.render(&painter);
  }
  return image.save(QString::fromLocal8Bit(argv[3]), "PNG") ? 0 : 1;
}
