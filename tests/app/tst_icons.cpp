#include "tests/support/testcase.h"

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

/// A figure as its kind, its text and the attributes that it has of those that matter for its kind.
QString figure(const QString &kind, const Attributes &values, const QString &text)
{
    static const QHash<QString, QString> names{
        {u"rect"_s, u"x y width height rx fill stroke stroke-width"_s},
        {u"circle"_s, u"cx cy r fill stroke stroke-width"_s},
        {u"line"_s, u"x1 y1 x2 y2 stroke stroke-width"_s},
        {u"text"_s, u"x y font-size font-family font-weight fill text-anchor"_s}};
    QStringList parts{kind, text.trimmed()};
    for (const auto all = names.value(kind).split(u' '); const QString &name : all)
        parts.append(values.value(name));
    parts.removeAll(QString());
    return parts.join(u' ');
}

/// Groups hand their attributes down to what is in them.
void readFigures(QXmlStreamReader &reader, const Attributes &inherited, Drawing &drawing)
{
    while (reader.readNextStartElement()) {
        Attributes values = inherited;
        for (const auto all = reader.attributes(); const QXmlStreamAttribute &attribute : all)
            values.insert(attribute.name().toString(), attribute.value().toString());
        const QString kind = reader.name().toString();
        if (kind == "g"_L1)
            readFigures(reader, values, drawing);
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
        readFigures(reader, {}, result);
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
    void icon_has_its_frame_and_its_figures_data()
    {
        QTest::addColumn<QStringList>("figures");
        QTest::addRow("orrinet.svg") << QStringList{
            u"rect 6 16 84 64 10 #f0f2f5 #888 2"_s, u"circle 30 40 8 #6495ed"_s,     u"rect 22 50 16 12 4 #a6c8ff"_s,
            u"circle 48 36 10 #52c41a"_s,           u"rect 38 48 20 15 5 #b7eb8f"_s, u"circle 66 40 8 #ffab91"_s,
            u"rect 58 50 16 12 4 #ffd6bf"_s,        u"line 38 22 38 74 #ccc 2"_s,    u"line 58 22 58 74 #ccc 2"_s};
        QTest::addRow("ornk-icon.svg") << QStringList{u"rect 16 28 64 44 8 #e6f7ff #78a7d8 2"_s,
                                                      u"rect 22 34 52 36 7 #f0f2f5 #88b8ee 1"_s,
                                                      u"circle 34 48 8 #6495ed"_s,
                                                      u"circle 48 44 9 #52c41a"_s,
                                                      u"circle 62 48 8 #ffab91"_s,
                                                      u"rect 26 55 16 10 3 #a6c8ff"_s,
                                                      u"rect 39 53 18 12 4 #b7eb8f"_s,
                                                      u"rect 54 55 16 10 3 #ffd6bf"_s,
                                                      u"rect 64 64 24 18 4 #35507a #6495ed 1.5"_s,
                                                      u"text ORK 76 77 10 Verdana bold white middle"_s};
        QTest::addRow("ormt-icon.svg") << QStringList{u"rect 16 16 64 64 8 #fffbe6 #b7a867 2"_s,
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
                                                      u"rect 64 64 24 18 4 #b7a867 #ffe58f 1.5"_s,
                                                      u"text PRJ 76 77 10 Verdana bold white middle"_s};
    }
    /// What does not overlap may be painted in any order, so the figures are compared as a set; but the ground comes
    /// first, and a badge comes last, since it covers what is under it.
    void icon_has_its_frame_and_its_figures()
    {
        QFETCH(QStringList, figures);
        Drawing icon = drawing(iconPath(QTest::currentDataTag()));
        QCOMPARE(icon.error, QString());
        QCOMPARE(icon.frame.value(u"viewBox"_s), u"0 0 96 96"_s);
        QCOMPARE(icon.frame.value(u"width"_s), u"256"_s);
        QCOMPARE(icon.frame.value(u"height"_s), u"256"_s);
        QVERIFY(!icon.figures.isEmpty());
        QCOMPARE(icon.figures.first(), figures.first());
        if (figures.last().startsWith("text"_L1))
            QCOMPARE(icon.figures.last(2), figures.last(2));
        icon.figures.sort();
        figures.sort();
        QCOMPARE(icon.figures, figures);
    }
};

ORRINET_TEST(TestIcons)
#include "tst_icons.moc"
