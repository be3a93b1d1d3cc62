// Draws the pill with a message as it stands still on the screen, with the code that Vemo draws it
// with, for tests that look for it there.
//
// usage: pill_picture MESSAGE PNG [COLOR]
// Prints where the pill is in the picture: x y width height.

#include <QGuiApplication>
#include <cmath>
#include <cstdio>

#include "ui/PillPainter.h"
#include "ui/PillText.h"

int main(int argc, char** argv) {
  using namespace vemo;
  using namespace Qt::Literals::StringLiterals;
  const QGuiApplication application(argc, argv);
  const QStringList arguments = QGuiApplication::arguments();
  if (arguments.size() < 3) return 2;

  const PillText text;
  PillPicture picture;
  PillPicture::Content content;
  content.message = arguments[1];
  content.layout = pillLayout({HUDModel::State::Kind::Error, content.message}, {}, text);
  const PillSize size = content.layout.size;
  picture.pill = {panelSize.width / 2 - size.width / 2, pillTopPadding(0, false), size.width,
                  size.height};
  for (ScreenRect* place : {&content.layout.symbol, &content.layout.message}) {
    place->x += picture.pill.x;
    place->y += picture.pill.y;
  }
  picture.cornerRadius = pillCornerRadius({});
  picture.colors = pillTheme(arguments.value(3)).pill;
  picture.contents = {content};

  QImage image(int(panelSize.width), int(panelSize.height), QImage::Format_ARGB32_Premultiplied);
  const std::span pixels(reinterpret_cast<std::uint32_t*>(image.bits()),
                         std::size_t(image.width()) * image.height());
  PillPainter(text).paint({pixels, image.width(), image.height(), 1}, picture, Ground::Translucent,
                          image.rect());
  std::printf("%d %d %d %d\n", int(std::ceil(picture.pill.x)), int(picture.pill.y),
              int(std::floor(size.width)), int(size.height));
  return image.save(arguments[2], "PNG") ? 0 : 1;
}
