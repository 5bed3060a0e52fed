// SPDX-License-Identifier: Apache-2.0
#include "drawing/Picture.h"

#include <gtest/gtest.h>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include <QFontInfo>
#include <QGuiApplication>
#include <QImage>
#include <QRegularExpression>
#include <QXmlStreamReader>
#include <cmath>
#include <memory>

#include "Plans.h"
#include "drawing/Lettering.h"
#include "drawing/PagePainter.h"

namespace test {
namespace {

using drawing::Format;
using drawing::MakePicture;
using drawing::Page;
using drawing::Theme;

class PictureTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    static int argc = 1;
    static char name[] = "test";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
#ifdef __SANITIZE_ADDRESS__
    const __lsan::ScopedDisabler qtKeepsItsScreen;
#endif
    s_application = std::make_unique<QGuiApplication>(argc, argv);
  }
  // Qt gives back what it has while the process still runs.
  static void TearDownTestSuite() {
    s_application.reset();
  }

 private:
  static inline std::unique_ptr<QGuiApplication> s_application;
};

// What an SVG says and draws.
struct Drawn {
  QString title, description;
  QStringList texts;
  std::vector<QRectF> boxes;  // of its rectangles with that fill, or of that class in a short one
};

Drawn Read(const QByteArray& svg, const QString& fill = {}) {
  Drawn drawn;
  QXmlStreamReader reader(svg);
  bool isFilled = false;
  while (!reader.atEnd()) {
    if (reader.readNext() != QXmlStreamReader::StartElement) continue;
    const QXmlStreamAttributes attributes = reader.attributes();
    const auto number = [&](const char* key) { return attributes.value(QLatin1String(key)).toDouble(); };
    if (reader.name() == QLatin1String("g")) {
      isFilled = attributes.value("fill") == fill || attributes.value("class").toString().split(' ').contains(fill);
    } else if (reader.name() == QLatin1String("rect") && isFilled) {
      drawn.boxes.emplace_back(number("x"), number("y"), number("width"), number("height"));
    } else if (reader.name() == QLatin1String("title")) {
      drawn.title = reader.readElementText();
    } else if (reader.name() == QLatin1String("desc")) {
      drawn.description = reader.readElementText();
    } else if (reader.name() == QLatin1String("text")) {
      drawn.texts += reader.readElementText().trimmed();
    }
  }
  EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
  return drawn;
}

Drawn Read(const Page& page, const QColor& fill = Qt::black) {
  return Read(MakePicture(page, Theme::Light(), Format::kSvg), fill.name());
}

Page Everything() {
  return OnePage(
      9, "",
      Camera(0, R"("Xtop":"0.25","Ytop":"0.5","Xbottom":"0.75","Ybottom":"1.0")") + "," +
          Camera(1, R"("CenterMark":{"TopX":0,"TopY":0,"BottomX":500,"BottomY":250,"StreamType":1})") + "," +
          Camera(2, R"("ZoomWindowList":{"ZoomWindow":[{"No":0,"TopX":100,"TopY":150,"BottomX":350,"BottomY":400}]})") +
          "," + Camera(3, R"("RelatedZoomWindow":{"ViewItemWindowNo":"2","ZoomWindowNo":0})") + "," +
          Camera(4, R"("FishEye":{"is_fisheye_open":true,"FisheyeWndParam":[{"WndNo":0,"PosX":"9","Zoom":"0"}]})") +
          "," + Camera(5, R"("CycleInfo":{"CycleResourceID":[{"ResourceID":"8"}]})") + "," +
          Camera(6, R"("RelateResourceType":4,"RelateResourceID":1)") + R"(,{"Sequence":7,"ResourceType":0})");
}

TEST_F(PictureTest, TheSamePageMakesTheSameBytesAndItsThemeAnotherPicture) {
  for (const Format format : {Format::kSvg, Format::kPng}) {
    const QByteArray light = MakePicture(Everything(), Theme::Light(), format);
    EXPECT_FALSE(light.isEmpty());
    EXPECT_EQ(light, MakePicture(Everything(), Theme::Light(), format));
    EXPECT_NE(light, MakePicture(Everything(), Theme::Dark(), format));
  }
}

TEST_F(PictureTest, BoxesAreDrawnToScale) {
  const Theme& theme = Theme::Light();
  // The colour, the part of the window's picture that it encloses.
  const std::tuple<const char*, QColor, QRectF> rows[] = {
      {"digital zoom", theme.digitalZoom, {0.25, 0.5, 0.5, 0.5}},
      {"centre mark", theme.centreMark, {0, 0, 0.5, 0.25}},
      {"zoom window", theme.OfZoomWindow(0), {0.1, 0.15, 0.25, 0.25}}};
  // The pictures, window by window: the only boxes of that colour that are 16 by 9.
  std::vector<QRectF> pictures;
  for (const QRectF& box : Read(Everything(), theme.scene).boxes) {
    if (std::abs(box.width() / box.height() - 16.0 / 9) < 0.01) pictures.push_back(box);
  }
  ASSERT_GE(pictures.size(), std::size(rows));
  auto picture = pictures.begin();
  for (const auto& [what, colour, part] : rows) {
    const auto boxes = Read(Everything(), colour).boxes;
    ASSERT_FALSE(boxes.empty()) << what;
    EXPECT_NEAR((boxes[0].left() - picture->left()) / picture->width(), part.left(), 0.002) << what;
    EXPECT_NEAR((boxes[0].top() - picture->top()) / picture->height(), part.top(), 0.002) << what;
    EXPECT_NEAR(boxes[0].width() / picture->width(), part.width(), 0.002) << what;
    EXPECT_NEAR(boxes[0].height() / picture->height(), part.height(), 0.002) << what;
    ++picture;
  }
}

// In a page of nine; in one of a hundred there is no room, and the last line says so.
TEST_F(PictureTest, LongNamesAndLinesCanBeReadOverSeveralLines) {
  const QString name = "A name too long for the bar of a window that is one of nine on its page";
  const QString text = "https://boards.example.invalid/" + QString(60, 'x');
  QJsonObject plan = Plan(9, "",
                          R"({"Sequence":0,"ResourceType":25001,"ResourceName":")" + name.toStdString() +
                              R"(","ExtendResource":")" + text.toStdString() + "\"}");
  const QString read = Read(drawing::ReadPage(plan, 1)).texts.join("");
  EXPECT_TRUE(QString(read).remove(' ').contains(QString(name).remove(' '))) << read.toStdString();
  EXPECT_TRUE(read.contains("“" + text + "”")) << read.toStdString();

  const Page crowded =
      OnePage(100, "", Camera(0, R"("RelateResourceID":1,"RelateResourceName":")" + std::string(300, 'x') + "\""));
  const QStringList texts = Read(crowded).texts;
  EXPECT_EQ(texts.filter(QRegularExpression("^and [0-9]+ more")).size(), 1) << texts.join("\n").toStdString();
}

// What a short drawing shows is what the whole one shows.
TEST_F(PictureTest, AShortDrawingHasTheSameTextsAndBoxes) {
  const Drawn whole = Read(Everything(), Theme::Light().scene);
  const QByteArray svg = drawing::MakeShortSvg(Everything());
  EXPECT_LT(svg.size() * 2, MakePicture(Everything(), Theme::Light(), Format::kSvg).size());
  const Drawn shortened = Read(svg, "f" + QString::number(Theme::NumberOf(Theme::Numbered().scene)));
  EXPECT_EQ(shortened.texts, whole.texts);
  ASSERT_EQ(shortened.boxes.size(), whole.boxes.size());
  for (size_t i = 0; i < whole.boxes.size(); ++i) {
    EXPECT_NEAR(shortened.boxes[i].left(), whole.boxes[i].left(), 0.051);
    EXPECT_NEAR(shortened.boxes[i].height(), whole.boxes[i].height(), 0.051);
  }
}

// Whether anything but ground lies on the outermost pixels, or text beside the sheet.
TEST_F(PictureTest, NothingLeavesTheSheet) {
  for (const Page& page : {Everything(), OnePage(64, "", Camera(63)), OnePage(40, "1x40", Camera(0))}) {
    const QImage image = QImage::fromData(MakePicture(page, Theme::Light(), Format::kPng));
    ASSERT_EQ(image.size(), SizeOf(page));
    QImage inside = image;
    inside.fill(Theme::Light().canvas);
    QPainter(&inside).drawImage(1, 1, image.copy(1, 1, image.width() - 2, image.height() - 2));
    EXPECT_TRUE(inside == image);
  }
}

TEST_F(PictureTest, WhateverANameHoldsTheFileCanBeRead) {
  QJsonObject plan = Plan(1, "", Camera(0));
  plan["Name"] = QString("<&\"'> ]]> \x01 ") + QChar(0xD800) + QChar(0xFFFE) + " رصيف 🚲";
  const Drawn drawn = Read(drawing::ReadPage(plan, 1));
  EXPECT_TRUE(drawn.title.startsWith("<&\"'> ]]> \\u0001 ")) << drawn.title.toStdString();
  EXPECT_TRUE(drawn.title.endsWith("\\ufffe رصيف 🚲")) << drawn.title.toStdString();
  EXPECT_TRUE(drawn.description.contains("0. Gate; camera 2001; site 3 · stream 1")) << drawn.description.toStdString();
  EXPECT_TRUE(drawn.texts.contains("camera 2001"));
  EXPECT_FALSE(MakePicture(drawing::ReadPage(plan, 1), Theme::Light(), Format::kPng).isEmpty());
}

TEST_F(PictureTest, LongLinesAreCutAndThoseReadFromTheRightBeginThere) {
  QImage image(300, 40, QImage::Format_RGB32);
  const QRectF place(50, 0, 200, 40);
  // Whether the ink begins where the place does, and ends there, to a few pixels.
  const std::tuple<const char*, bool, bool> rows[] = {
      {"Gate", true, false},
      {"باب", false, true},
      {"A name that is far too long for the place it has to stand in", true, true},
      {"اسم طويل جدا لا مكان له هنا مهما حاولنا كتابته في هذا السطر الواحد", true, true}};
  for (const auto& [text, fromLeft, toRight] : rows) {
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setPen(Qt::black);
    drawing::DrawLine(painter, drawing::Lettering(16), place, text);
    painter.end();
    int left = image.width(), right = 0;
    for (int x = 0; x < image.width(); ++x) {
      for (int y = 0; y < image.height(); ++y) {
        if (image.pixelColor(x, y).lightness() > 128) continue;
        left = std::min(left, x);
        right = std::max(right, x);
      }
    }
    EXPECT_GE(left, 49) << text;
    EXPECT_LE(left, fromLeft ? 70 : 250) << text;
    EXPECT_GE(right, toRight ? 230 : 50) << text;
    EXPECT_LE(right, 251) << text;
  }
}

double Luminance(const QColor& colour) {
  const auto part = [](double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) + 0.0722 * part(colour.blueF());
}

double Contrast(const QColor& one, const QColor& other) {
  const double a = Luminance(one) + 0.05;
  const double b = Luminance(other) + 0.05;
  return std::max(a, b) / std::min(a, b);
}

TEST_F(PictureTest, TextStandsOutFromItsGround) {
  for (const Theme* theme : {&Theme::Light(), &Theme::Dark()}) {
    std::vector<QColor> words = {theme->digitalZoom, theme->centreMark, theme->fishEye, theme->cycle,
                                 theme->map,         theme->related,    theme->preset};
    for (int zoom = 0; zoom < 6; ++zoom) words.push_back(theme->OfZoomWindow(zoom));
    for (const QColor& colour : words) EXPECT_GE(Contrast(colour, theme->cell), 4.5) << colour.name().toStdString();
    for (const QColor& ground : {theme->cell, theme->bar, theme->canvas}) {
      EXPECT_GE(Contrast(theme->text, ground), 4.5);
      EXPECT_GE(Contrast(theme->dimText, ground), 4.5);
    }
    EXPECT_GE(Contrast(theme->text, theme->scene), 4.5) << "a map's scale";
    EXPECT_GE(Contrast(theme->cycle, theme->scene), 4.5) << "the cycle's number and time stand on the picture";
  }
}

TEST_F(PictureTest, TheFirstFontIsThere) {
  EXPECT_EQ(QFontInfo(drawing::Lettering(16)).family(), drawing::kFirstFont) << "fonts-dejavu-core is not installed";
}

}  // namespace
}  // namespace test
