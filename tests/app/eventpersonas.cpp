// Steps on the Digital Twins tab.

#include "tests/app/eventdriver.h"
#include "tests/personas/personaform.h"

#include <QComboBox>
#include <QPushButton>
#include <QTableWidget>

using namespace Qt::StringLiterals;

static constexpr int mostPersonas = 6;

static QStringList personaTables()
{
    return {u"personas"_s, u"tags"_s, u"persona_tags"_s};
}

static QString personaTextFor(int number)
{
    static const QStringList all{u""_s, u"calm"_s, u"keeps bees\nand two cats"_s, u"\u00e9\u2713 'quoted'"_s};
    return all.at(number % all.size());
}

static QString tagTextFor(int number)
{
    static const QStringList all{u""_s, u"a"_s, u"b, a"_s, u"a,,b  c"_s, u"c"_s};
    return all.at(number % all.size());
}

static QString nameFor(int number)
{
    return u"P%1"_s.arg(number % 4);
}

bool EventDriver::performOnPersonas(const Step &step)
{
    switch (step.act) {
    case Act::NewPersona:
    case Act::EditPersona:
        editPersona(step, step.act == Act::NewPersona);
        return true;
    case Act::CopyPersona:
    case Act::DeletePersona:
        copyOrDeletePersona(step);
        return true;
    case Act::InsertPersona:
        if (stage.count(u"personas"_s) >= mostPersonas)
            return true;
        quietly(
            [&] { stage.call("insertPersona", nameFor(step.which), personaTextFor(step.how), tagTextFor(step.how)); });
        break;
    case Act::UpdatePersona: {
        // Behind the last one comes one that there is not.
        const QStringList uuids = stage.column(u"SELECT uuid FROM personas ORDER BY uuid"_s) << u"nobody"_s;
        const QString uuid = uuids.at(step.which % uuids.size());
        quietly([&] { stage.call("updatePersona", uuid, nameFor(step.how), u"changed"_s, tagTextFor(step.how)); });
        break;
    }
    case Act::FilterTag:
        filterTag(step);
        return true;
    default:
        return false;
    }
    expected.dirty = true;
    checks.after({.tables = personaTables(), .refreshed = Refreshed::Project});
    return true;
}

void EventDriver::editPersona(const Step &step, bool isNew)
{
    showTab(u"Digital Twins"_s);
    QTableWidget *table = personaTable(stage);
    const bool full = stage.count(u"personas"_s) >= mostPersonas;
    // A row that there is not stands for a new persona.
    const int row = table->rowCount() > 0 ? step.which % table->rowCount() : 0;
    const bool adds = isNew || table->rowCount() == 0;
    const bool accepts = step.how % 4 != 0 && !(adds && full);
    const Answer fill = [&](QWidget *dialog) {
        const PersonaForm form(dialog);
        form.name->setText(nameFor(step.how));
        form.description->setPlainText(personaTextFor(step.how));
        form.tags->setText(tagTextFor(step.how));
        if (accepts)
            form.accept();
    };
    const int came = answering({after(step, fill)}, [&] {
        if (isNew) {
            stage.button(u"New"_s, u"Digital Twins"_s)->click();
        } else if (step.how % 2 == 0 && !adds) {
            // Where nothing comes of the dialog, the cell's own editor opens.
            checks.personasTouched();
            doubleClick(table, table->model()->index(row, step.which % 3));
        } else {
            stage.call("editPersona", row, 0);
        }
    });
    if (came != 1)
        checks.complain(u"no persona dialog came"_s);
    if (accepts)
        expected.dirty = true;
    checks.after(accepts ? Effect{.tables = personaTables(), .refreshed = Refreshed::Project} : Effect());
}

void EventDriver::copyOrDeletePersona(const Step &step)
{
    const bool copies = step.act == Act::CopyPersona;
    QTableWidget *table = personaTable(stage);
    if (copies && stage.count(u"personas"_s) >= mostPersonas)
        return;
    if (table->rowCount() > 0 && step.how % 6 != 0)
        table->setCurrentCell(step.which % table->rowCount(), 0);
    const int row = table->currentRow();
    const QVariant uuid = row < 0 ? QVariant() : table->item(row, 1)->data(Qt::UserRole);
    const bool there = stage.value(u"SELECT COUNT(*) FROM personas WHERE uuid=?"_s, {uuid}).toInt() > 0;
    const int before = stage.count(u"personas"_s);
    quietly([&] { stage.button(copies ? u"Copy"_s : u"Delete"_s, u"Digital Twins"_s)->click(); });

    if (stage.count(u"personas"_s) != before + (there ? (copies ? 1 : -1) : 0))
        checks.complain(u"one persona more or less"_s);
    if (row < 0 || (copies && !there)) {
        checks.after({});
        return;
    }
    expected.dirty = true;
    checks.after({.tables = copies ? personaTables() : QStringList{u"personas"_s}, .refreshed = Refreshed::Project});
}

void EventDriver::filterTag(const Step &step)
{
    QComboBox *chooser = tagFilter(stage);
    const int index = step.which % chooser->count();
    const bool changes = chooser->itemText(index) != chooser->currentText();
    if (changes)
        checks.chooseFilter(chooser->itemText(index));
    quietly([&] { chooser->setCurrentIndex(index); });
    if (!changes)
        checks.after({});
    else if (!expected.packPath.isEmpty())
        checks.after({.refreshed = Refreshed::Pack, .warnings = packWarnings(expected.packPath)});
    else {
        expected.dirty = true;
        checks.after({.refreshed = Refreshed::Project});
    }
}
