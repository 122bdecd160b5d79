#include "demo/thirdact.h"

#include "demo/secondlook.h"

#include <QDir>
#include <QProcess>

using namespace Qt::StringLiterals;

ThirdAct::ThirdAct(const QString &study, const QDir &folder, QTextStream &out)
    : program(study)
    , files(folder)
    , output(out)
{
}

bool ThirdAct::run(const QStringList &arguments)
{
    output << "orrinet-study "_L1 << arguments.first() << '\n';
    output.flush();
    return QProcess::execute(program, arguments) == 0;
}

QStringList ThirdAct::play()
{
    output << "\nthird act: the survey checked, exported and reported on, by orrinet-study\n"_L1;
    const QString project = DemoFile::project(files);
    // The second act has shown how to get there, so that no format is in the way.
    if (!run({u"check"_s, project, u"--bridge"_s}))
        return {u"the check found something that blocks"_s};
    for (const QString &format : {u"csv"_s, u"xlsx"_s, u"sav"_s, u"dta"_s, u"json"_s}) {
        if (!run({u"export"_s, project, u"--to"_s, format, u"--out"_s, files.filePath("export-"_L1 + format),
                  u"--force"_s}))
            return {u"the export to %1 failed"_s.arg(format)};
    }
    for (const QString &name : {u"report.html"_s, u"report.pdf"_s}) {
        if (!run({u"report"_s, project, u"--out"_s, files.filePath(name), u"--force"_s}))
            return {u"%1 could not be made"_s.arg(name)};
    }
    output << "export-csv/ and its siblings have the answers, report.html and report.pdf tell of them\n"_L1;
    output.flush();
    return {};
}
