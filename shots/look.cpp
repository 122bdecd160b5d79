#include "shots/look.h"

#include <QApplication>
#include <QFont>
#include <QFontInfo>
#include <QLocale>
#include <QPalette>

using namespace Qt::StringLiterals;

void leaveUsersLook()
{
    for (const char *variable :
         {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_SCALE_FACTOR_ROUNDING_POLICY", "QT_ENABLE_HIGHDPI_SCALING",
          "QT_USE_PHYSICAL_DPI", "QT_FONT_DPI", "QT_STYLE_OVERRIDE", "QT_QPA_PLATFORMTHEME"})
        qunsetenv(variable);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("LC_ALL", "C.UTF-8");
    QLocale::setDefault(QLocale::C);
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
}

static QPalette lightPalette()
{
    QPalette palette(QColor(0xef, 0xef, 0xef));
    palette.setColor(QPalette::AlternateBase, QColor(0xf7, 0xf7, 0xf7));
    palette.setColor(QPalette::Highlight, QColor(0x30, 0x8c, 0xc6));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Accent, QColor(0x30, 0x8c, 0xc6));
    return palette;
}

QString takeLook()
{
    // Without hinting lines are as long, and so broken where they are, by each version of the font renderer.
    QFont font(u"DejaVu Sans"_s);
    font.setPixelSize(13);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    if (QFontInfo(font).family() != font.family())
        return u"the font %1 is missing"_s.arg(font.family());
    QApplication::setStyle(u"Fusion"_s);
    QApplication::setPalette(lightPalette());
    QApplication::setFont(font);
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    // A cursor stands still.
    QApplication::setCursorFlashTime(0);
    return {};
}
