#include "tests/study/export/statread.h"

#include "study/export/format.h"

#include <QDateTime>
#include <QFile>

#include <readstat.h>

using namespace Qt::StringLiterals;

namespace {

struct Reading
{
    StatFile *file;
    QMap<QString, QMap<QString, QString>> sets;
    QStringList setNames; ///< of each variable
};

QString shownNumber(readstat_value_t value, readstat_variable_t *variable)
{
    if (readstat_value_is_tagged_missing(value))
        return u"."_s + QChar::fromLatin1(readstat_value_tag(value));
    if (readstat_value_is_system_missing(value))
        return u"."_s;
    const QString number = study::numberText(readstat_double_value(value));
    return readstat_value_is_defined_missing(value, variable) ? number + u" missing"_s : number;
}

int takeVariable(int, readstat_variable_t *variable, const char *labels, void *context)
{
    auto *reading = static_cast<Reading *>(context);
    reading->file->names << QString::fromUtf8(readstat_variable_get_name(variable));
    reading->file->wordings << QString::fromUtf8(readstat_variable_get_label(variable));
    reading->file->formats << QString::fromUtf8(readstat_variable_get_format(variable));
    reading->setNames << QString::fromUtf8(labels);
    return READSTAT_HANDLER_OK;
}

int takeLabel(const char *set, readstat_value_t value, const char *label, void *context)
{
    QString key = u"."_s + QChar::fromLatin1(readstat_value_tag(value));
    if (!readstat_value_is_tagged_missing(value))
        key = study::numberText(readstat_double_value(value));
    static_cast<Reading *>(context)->sets[QString::fromUtf8(set)][key] = QString::fromUtf8(label);
    return READSTAT_HANDLER_OK;
}

int takeValue(int row, readstat_variable_t *variable, readstat_value_t value, void *context)
{
    QList<QStringList> &rows = static_cast<Reading *>(context)->file->rows;
    if (row == rows.size())
        rows.append(QStringList());
    if (readstat_value_type_class(value) == READSTAT_TYPE_CLASS_STRING)
        rows.last() << QString::fromUtf8(readstat_string_value(value));
    else
        rows.last() << shownNumber(value, variable);
    return READSTAT_HANDLER_OK;
}

int takeMetadata(readstat_metadata_t *metadata, void *context)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(readstat_get_creation_time(metadata));
    static_cast<Reading *>(context)->file->time = time.toString(u"yyyy-MM-dd hh:mm"_s);
    return READSTAT_HANDLER_OK;
}

} // namespace

StatFile::StatFile(const QString &path)
{
    Reading reading{.file = this, .sets = {}, .setNames = {}};
    readstat_parser_t *parser = readstat_parser_init();
    readstat_set_metadata_handler(parser, takeMetadata);
    readstat_set_variable_handler(parser, takeVariable);
    readstat_set_value_label_handler(parser, takeLabel);
    readstat_set_value_handler(parser, takeValue);
    const QByteArray name = QFile::encodeName(path);
    const auto error = path.endsWith(".sav"_L1) ? readstat_parse_sav(parser, name.constData(), &reading)
                                                : readstat_parse_dta(parser, name.constData(), &reading);
    readstat_parser_free(parser);
    if (error != READSTAT_OK)
        failure = QString::fromUtf8(readstat_error_message(error));
    for (qsizetype place = 0; place < names.size(); ++place) {
        if (!reading.setNames.at(place).isEmpty())
            valueLabels[names.at(place)] = reading.sets.value(reading.setNames.at(place));
    }
}
