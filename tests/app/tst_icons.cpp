#include <QFile>
#include <QTest>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

struct Drawing
{
    QHash<QString, QString> frame;
    /// Each figure as one text, in the order in which they are painted.
    QStringList figures;
    QString error;
};

using Attributes = QHash<QString, QString>;

QString figure(const QString &kind, const Attributes &values, const QString &text)
{
    const auto list = [&values](std::initializer_list<QLatin1StringView> names) {
        QStringList parts;
        for (const QLatin1StringView name : names)
            parts.append(values.value(name));
        return parts.join(u' ');
    };
    const QString stroke =
        values.contains(u"stroke"_s) ? " stroke "_L1 + list({"stroke"_L1, "stroke-width"_L1}) : QString();
    if (kind == "rect"_L1)
        return "rect "_L1 + list({"x"_L1, "y"_L1, "width"_L1, "height"_L1, "rx"_L1, "fill"_L1}) + stroke;
    if (kind == "circle"_L1)
        return "circle "_L1 + list({"cx"_L1, "cy"_L1, "r"_L1, "fill"_L1}) + stroke;
    if (kind == "line"_L1)
        return "line "_L1 + list({"x1"_L1, "y1"_L1, "x2"_L1, "y2"_L1}) + stroke;
    return "text "_L1 + text + u' ' +
           list({"x"_L1, "y"_L1, "font-size"_L1, "font-family"_L1, "font-weight"_L1, "fill"_L1}) +
           (values.contains(u"text-anchor"_s) ? u' ' + values.value(u"text-anchor"_s) : QString());
}

/// Groups hand their attributes down to what is in them.
void read(QXmlStreamReader &reader, const Attributes &inherited, Drawing &drawing)
{
    while (reader.readNextStartElement()) {
        Attributes values = inherited;
        for (const auto all = reader.attributes(); const QXmlStreamAttribute &attribute : all)
            values.insert(attribute.name().toString(), attribute.value().toString());
        const QString kind = reader.name().toString();
        if (kind == "g"_L1)
            read(reader, values, drawing);
        else
            drawing.figures.append(figure(kind, values, reader.readElementText()));
    }
}

Drawing drawing(const QString &path)
{
    Drawing result;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return result;
    QXmlStreamReader reader(&file);
    if (reader.readNextStartElement() && reader.name() == "svg"_L1 &&
        reader.namespaceUri() == "http://www.w3.org/2000/svg"_L1) {
        for (const auto all = reader.attributes(); const QXmlStreamAttribute &attribute : all)
            result.frame.insert(attribute.name().toString(), attribute.value().toString());
        read(reader, {}, result);
    }
    while (!reader.atEnd())
        reader.readNext();
    result.error = reader.errorString();
    return result;
}

QString iconPath(const char *name)
{
    return ":/icons/resources/icons/svg/"_L1 + QLatin1StringView(name);
}

} // namespace

class TestIcons : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void icon_has_its_frame_and_its_figures_data();
    void icon_has_its_frame_and_its_figures();
    void badge_covers_what_is_under_it();
};

void TestIcons::icon_has_its_frame_and_its_figures_data()
{
    QTest::addColumn<QStringList>("figures");
    QTest::addRow("orrinet.svg") << QStringList{u"rect 6 16 84 64 10 #f0f2f5 stroke #888 2"_s,
                                                u"circle 30 40 8 #6495ed"_s,
                                                u"rect 22 50 16 12 4 #a6c8ff"_s,
                                                u"circle 48 36 10 #52c41a"_s,
                                                u"rect 38 48 20 15 5 #b7eb8f"_s,
                                                u"circle 66 40 8 #ffab91"_s,
                                                u"rect 58 50 16 12 4 #ffd6bf"_s,
                                                u"line 38 22 38 74 stroke #ccc 2"_s,
                                                u"line 58 22 58 74 stroke #ccc 2"_s};
    QTest::addRow("ornk-icon.svg") << QStringList{u"rect 16 28 64 44 8 #e6f7ff stroke #78a7d8 2"_s,
                                                  u"rect 22 34 52 36 7 #f0f2f5 stroke #88b8ee 1"_s,
                                                  u"circle 34 48 8 #6495ed"_s,
                                                  u"circle 48 44 9 #52c41a"_s,
                                                  u"circle 62 48 8 #ffab91"_s,
                                                  u"rect 26 55 16 10 3 #a6c8ff"_s,
                                                  u"rect 39 53 18 12 4 #b7eb8f"_s,
                                                  u"rect 54 55 16 10 3 #ffd6bf"_s,
                                                  u"rect 64 64 24 18 4 #35507a stroke #6495ed 1.5"_s,
                                                  u"text ORK 76 77 10 Verdana bold white middle"_s};
    QTest::addRow("ormt-icon.svg") << QStringList{u"rect 16 16 64 64 8 #fffbe6 stroke #b7a867 2"_s,
                                                  u"circle 32 32 7 #6495ed"_s,
                                                  u"circle 32 48 7 #52c41a"_s,
                                                  u"circle 32 64 7 #ffab91"_s,
                                                  u"circle 48 32 3 #b7eb8f"_s,
                                                  u"circle 48 48 3 #ffe58f"_s,
                                                  u"circle 48 64 3 #ffd6bf"_s,
                                                  u"text \u2713 58 36 8 Verdana bold #52c41a"_s,
                                                  u"text \u2713 58 52 8 Verdana bold #52c41a"_s,
                                                  u"text \u2713 58 68 8 Verdana bold #52c41a"_s,
                                                  u"text \u2717 68 36 8 Verdana bold #f5222d"_s,
                                                  u"text \u2717 68 52 8 Verdana bold #f5222d"_s,
                                                  u"text \u2717 68 68 8 Verdana bold #f5222d"_s,
                                                  u"rect 64 64 24 18 4 #b7a867 stroke #ffe58f 1.5"_s,
                                                  u"text PRJ 76 77 10 Verdana bold white middle"_s};
}

/// What does not overlap may be painted in any order, so the figures are compared as a set; the ground comes first.
void TestIcons::icon_has_its_frame_and_its_figures()
{
    QFETCH(QStringList, figures);
    Drawing icon = drawing(iconPath(QTest::currentDataTag()));
    QCOMPARE(icon.error, QString());
    QCOMPARE(icon.frame.value(u"viewBox"_s), u"0 0 96 96"_s);
    QCOMPARE(icon.frame.value(u"width"_s), u"256"_s);
    QCOMPARE(icon.frame.value(u"height"_s), u"256"_s);
    QVERIFY(!icon.figures.isEmpty());
    QCOMPARE(icon.figures.first(), figures.first());
    icon.figures.sort();
    figures.sort();
    QCOMPARE(icon.figures, figures);
}

void TestIcons::badge_covers_what_is_under_it()
{
    for (const char *name : {"ornk-icon.svg", "ormt-icon.svg"}) {
        const QStringList figures = drawing(iconPath(name)).figures;
        QCOMPARE_GT(figures.size(), 2);
        QVERIFY2(figures.at(figures.size() - 2).startsWith("rect 64 64 "_L1), name);
        QVERIFY2(figures.last().startsWith("text "_L1), name);
    }
}

QTEST_APPLESS_MAIN(TestIcons)
#include "tst_icons.moc"
