#include "study/report/palette.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

namespace {

/// No two light ones may be the same: a drawing as SVG knows a colour by its value alone.
struct Pair
{
    const char *light;
    const char *dark;
};

constexpr std::array<Pair, 10> inks{{{"#1c1c1c", "#ececec"},
                                     {"#5f5f5f", "#a8a8a8"},
                                     {"#c4c4c4", "#4a4a4a"},
                                     {"#ffffff", "#161616"},
                                     {"#2b6a94", "#6fb1da"},
                                     {"#a9c9de", "#2c4f66"},
                                     {"#b8860b", "#e0b341"},
                                     {"#a1512a", "#e29a72"},
                                     {"#e0b9a3", "#6b3c25"},
                                     {"#d6d6d6", "#3d3d3d"}}};

constexpr std::array<Pair, 6> shades{{{"#fdfdfd", "#181818"},
                                      {"#dbe7ef", "#20303b"},
                                      {"#b5cfe0", "#2c4a5e"},
                                      {"#84adc9", "#3d6b89"},
                                      {"#4b83a8", "#5f9cc4"},
                                      {"#1f5a82", "#93c9ec"}}};

size_t shadeOf(double share)
{
    const double step = std::ceil(std::clamp(share, 0.0, 1.0) * double(shades.size() - 1));
    return size_t(step);
}

QString rule(const Pair &pair)
{
    return uR"(svg [fill="%1"]{fill:%2}svg [stroke="%1"]{stroke:%2})"_s.arg(QLatin1StringView(pair.light),
                                                                            QLatin1StringView(pair.dark));
}

} // namespace

QColor colour(Ink ink)
{
    return QColor(QLatin1StringView(inks.at(size_t(ink)).light));
}

QColor shade(double share)
{
    return QColor(QLatin1StringView(shades.at(shadeOf(share)).light));
}

Ink inkOn(double share)
{
    return shadeOf(share) >= 4 ? Ink::Paper : Ink::Text;
}

QString darkRules()
{
    QString rules;
    for (const Pair &pair : inks)
        rules += rule(pair);
    for (const Pair &pair : shades)
        rules += rule(pair);
    return rules;
}

} // namespace study
