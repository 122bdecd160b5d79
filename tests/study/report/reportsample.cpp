#include "tests/study/report/reportsample.h"

#include "tests/support/entries.h"
#include "tests/support/sidedatabase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using study::Block;
using study::Blocks;
using study::Entries;
using study::Figure;
using study::Heading;
using study::Paragraph;
using study::Project;
using study::Quotation;
using study::readProject;
using study::Survey;
using study::TextTable;
using study::Verbatim;

ReadSurvey::ReadSurvey(const QString &path)
{
    auto read = readProject(path);
    if (const QString *reason = std::get_if<QString>(&read)) {
        QTest::qFail(qUtf8Printable(*reason), __FILE__, __LINE__);
        return;
    }
    project = std::get<Project>(read);
    survey = std::make_unique<Survey>(project);
}

static QString twoDigits(int number)
{
    return QString::number(number).rightJustified(2, u'0');
}

static QString uuidOf(int number)
{
    return u'p' + twoDigits(number);
}

static void enterDrinkers(Sql &file)
{
    for (int number = 0; number < 12; ++number) {
        PersonaEntered persona{.uuid = uuidOf(number),
                               .name = QString(u"Member "_s + twoDigits(number)),
                               .attributes = u"Drinks number %1 in a house of its own kind"_s.arg(number)};
        if (number % 2 == 0)
            persona.tags << u"rural"_s;
        if (number % 4 == 0)
            persona.tags << u"young"_s;
        enter(file, persona);
    }
}

static void enterSips(Sql &file, int number)
{
    const QString uuid = uuidOf(number);
    const QString reasons = uR"({"answer":"x","reasoning":"Because of number %1."})"_s.arg(number);
    const QStringList scale{u"never"_s, u"seldom"_s, u"at times"_s, u"often"_s, u"always"_s};
    enter(
        file,
        AnswerEntered{.persona = uuid, .question = 1, .text = number < 9 ? u"Tea"_s : u"Coffee"_s, .json = reasons},
        AnswerEntered{.persona = uuid, .question = 2, .text = number % 2 == 0 ? u"Tea, Milk"_s : u"Milk"_s},
        AnswerEntered{.persona = uuid, .question = 3, .text = QString(u"I like the warmth."_s + QString(number, u'!'))},
        AnswerEntered{.persona = uuid, .question = 4, .number = number},
        AnswerEntered{.persona = uuid, .question = 5, .text = number == 11 ? u"hm"_s : scale.at(number % 5)});
    if (number < 11)
        enter(file, AnswerEntered{.persona = uuid, .question = 6, .text = u"Milk\nTea\nCoffee"_s});
}

QString writeDrinks(const QString &path)
{
    SideDatabase file(writeProject(path));
    const QString drinks = uR"(["Tea","Coffee","Milk"])"_s;
    setBoilerplate(file, u"You are a person."_s, u"Stay in character."_s);
    enterDrinkers(file);
    enter(file, QuestionEntered{.prompt = u"Which drink?"_s, .type = u"single_choice"_s, .labels = drinks},
          QuestionEntered{.prompt = u"Tea, coffee or milk?"_s, .type = u"multi_choice"_s, .labels = drinks},
          QuestionEntered{.prompt = u"Why?"_s, .type = u"text"_s},
          QuestionEntered{.prompt = u"How many cups?"_s, .type = u"numeric"_s},
          QuestionEntered{.prompt = u"How often?"_s,
                          .type = u"likert"_s,
                          .labels = uR"(["never","seldom","at times","often","always"])"_s},
          QuestionEntered{.prompt = u"Order them."_s, .type = u"ranking"_s, .labels = drinks});
    for (int number = 0; number < 12; ++number)
        enterSips(file, number);
    return path;
}

namespace {

struct Sayer
{
    void operator()(const Heading &heading) { said << u"Heading: "_s + heading.text; }
    void operator()(const Paragraph &paragraph) { said << u"Paragraph: "_s + paragraph.text; }
    void operator()(const Entries &entries)
    {
        for (const Entries::Entry &entry : entries.entries)
            said << u"Entry: "_s + entry.text + u" -> "_s + entry.anchor;
    }
    void operator()(const TextTable &table)
    {
        if (!table.caption.isEmpty())
            said << u"Caption: "_s + table.caption;
        said << u"Header: "_s + table.header.join(u" | "_s);
        for (const TextTable::Row &row : table.rows)
            said << (row.faint ? u"Faint: "_s : u"TextTable: "_s) + row.cells.join(u" | "_s);
    }
    void operator()(const Quotation &quotation)
    {
        said << u"Quotation: "_s + quotation.text + u" / "_s + quotation.source;
    }
    void operator()(const Verbatim &verbatim) { said << u"Verbatim: "_s + verbatim.text; }
    void operator()(const Figure &figure) { said << u"Figure: "_s + figure.title + u" / "_s + figure.alternative; }

    QStringList said;
};

} // namespace

QStringList saidBy(const Blocks &blocks)
{
    Sayer sayer;
    for (const Block &block : blocks)
        std::visit(sayer, block);
    // Without the marks that keep the direction of foreign text to itself.
    for (QString &each : sayer.said)
        each.remove(QChar(0x2068)).remove(QChar(0x2069));
    return sayer.said;
}
