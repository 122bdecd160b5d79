#include "tests/app/eventviews.h"

#include <QComboBox>
#include <QPlainTextEdit>
#include <QSqlTableModel>
#include <QTableView>
#include <QTableWidget>

using namespace Qt::StringLiterals;

const QStringList &projectTables()
{
    static const QStringList tables{u"metadata"_s,  u"boilerplate"_s,          u"personas"_s, u"questions"_s,
                                    u"responses"_s, u"question_attachments"_s, u"tags"_s,     u"persona_tags"_s};
    return tables;
}

static QString textOf(const QVariantList &row)
{
    QStringList parts;
    for (const QVariant &value : row)
        parts << (value.isNull() ? u"NULL"_s : u'"' + value.toString() + u'"');
    return parts.join(u' ');
}

QStringList texts(const Rows &rows)
{
    QStringList lines;
    for (const QVariantList &row : rows)
        lines << textOf(row);
    return lines;
}

bool isDense(Sql &database)
{
    int number = 0;
    for (const QStringList all = database.column(u"SELECT order_num FROM questions ORDER BY order_num"_s);
         const QString &found : all) {
        if (found != QString::number(++number))
            return false;
    }
    return true;
}

bool hasCellEditor(const QAbstractItemView *table)
{
    return !table->viewport()->findChildren<QWidget *>(Qt::FindDirectChildrenOnly).isEmpty();
}

QStringList shownPersonaRows(Stage &stage)
{
    QTableWidget *table = personaTable(stage);
    QStringList lines;
    for (int row = 0; row < table->rowCount(); ++row) {
        const auto *narrative = qobject_cast<QPlainTextEdit *>(table->cellWidget(row, 3));
        lines << textOf({table->item(row, 1)->data(Qt::UserRole), table->item(row, 0)->text(),
                         narrative != nullptr ? narrative->toPlainText() : u"no narrative"_s,
                         table->item(row, 4)->text(), table->item(row, 5)->text(), table->item(row, 2)->text()});
    }
    return lines;
}

QStringList personaRows(Sql &source, const QString &filter)
{
    const bool filtered = filter != "All"_L1;
    const QString query =
        u"SELECT p.uuid,p.name,IFNULL(p.attributes,''),p.created_at,p.modified_at,IFNULL(GROUP_CONCAT(t.name,','),'') "
        "FROM personas p LEFT JOIN persona_tags pt ON p.uuid=pt.persona_uuid LEFT JOIN tags t ON pt.tag_id=t.id "
        "%1 GROUP BY p.uuid"_s.arg(filtered ? u"WHERE t.name=?"_s : QString());
    return texts(source.rows(query, filtered ? QVariantList{filter} : QVariantList()));
}

static const QStringList &questionFields()
{
    static const QStringList fields{u"question_id"_s, u"order_num"_s,          u"prompt"_s,         u"answer_type"_s,
                                    u"labels"_s,      u"reasoning_required"_s, u"judge_question"_s, u"ask_when"_s};
    return fields;
}

QStringList shownQuestionRows(Stage &stage)
{
    const QSqlTableModel *model = questionModel(stage);
    QStringList lines;
    for (int row = 0; model != nullptr && row < model->rowCount(); ++row) {
        QVariantList values;
        for (const QString &field : questionFields())
            values << model->index(row, model->fieldIndex(field)).data(Qt::EditRole);
        lines << textOf(values);
    }
    return lines;
}

QStringList questionRows(Stage &stage)
{
    return texts(stage.rows(u"SELECT %1 FROM questions ORDER BY order_num"_s.arg(questionFields().join(u','))));
}

QStringList entries(const QComboBox *chooser)
{
    Rows rows;
    for (int index = 0; index < chooser->count(); ++index)
        rows.append({chooser->itemText(index), chooser->itemData(index)});
    return texts(rows);
}

QStringList wantedPersonas(Stage &stage)
{
    return texts(stage.rows(u"SELECT name,uuid FROM personas ORDER BY name"_s));
}

QStringList wantedQuestions(Stage &stage)
{
    Rows rows = stage.rows(u"SELECT order_num,question_id FROM questions ORDER BY order_num"_s);
    for (QVariantList &row : rows)
        row.first() = QString::number(row.first().toInt());
    return texts(rows);
}

static QString answerText(Stage &stage, const QVariant &persona, const QVariant &question)
{
    const Rows found = stage.rows(u"SELECT text_answer,numeric_answer,json_answer FROM responses WHERE persona_uuid=? "
                                  "AND question_id=? ORDER BY created_at DESC LIMIT 1"_s,
                                  {persona, question});
    if (found.isEmpty())
        return {};
    const QVariantList &answer = found.first();
    if (!answer.at(0).toString().isEmpty())
        return answer.at(0).toString();
    return answer.at(1).isNull() ? answer.at(2).toString() : QString::number(answer.at(1).toDouble(), 'g', 6);
}

QString conversationText(Stage &stage)
{
    const ConversationBox box(stage);
    const QVariant persona = box.persona->currentData();
    QStringList lines{preambleEdit(stage)->toPlainText()};
    lines << stage
                 .value(u"SELECT CASE WHEN IFNULL(system_prompt,'')='' THEN attributes ELSE system_prompt END "
                        "FROM personas WHERE uuid=?"_s,
                        {persona})
                 .toString();
    if (const QString postamble = postambleEdit(stage)->toPlainText(); !postamble.isEmpty())
        lines << postamble;
    for (const Rows all = stage.rows(u"SELECT question_id,prompt FROM questions ORDER BY order_num"_s);
         const QVariantList &question : all) {
        const QString answer = answerText(stage, persona, question.first());
        const bool chosen = question.first() == box.question->currentData();
        if (!answer.isEmpty())
            lines << u"Q: "_s + question.last().toString() << u"A: "_s + answer;
        else if (chosen && !question.last().toString().isEmpty())
            lines << u"Q: "_s + question.last().toString() << u"A: (pending)"_s;
        if (chosen)
            break;
    }
    return lines.join(u'\n').trimmed();
}
