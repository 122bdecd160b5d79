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
    const int status = QProcess::execute(program, arguments);
    if (status != 0)
        flaws << u"orrinet-study %1 ended with status %2"_s.arg(arguments.first()).arg(status);
    return status == 0;
}

QStringList ThirdAct::play()
{
    output << "\nthird act: the survey checked, exported and reported on, by orrinet-study\n"_L1;
    const QString project = DemoFile::project(files);
    // The second act has shown how to get there, so that no format is in the way.
    bool goesOn = run({u"check"_s, project, u"--bridge"_s});
    for (const QString &format : {u"csv"_s, u"xlsx"_s, u"sav"_s, u"dta"_s, u"json"_s}) {
        goesOn = goesOn && run({u"export"_s, project, u"--to"_s, format, u"--out"_s,
                                files.filePath("export-"_L1 + format), u"--force"_s});
    }
    for (const QString &name : {u"report.html"_s, u"report.pdf"_s})
        goesOn = goesOn && run({u"report"_s, project, u"--out"_s, files.filePath(name), u"--force"_s});
    if (goesOn)
        output << "export-csv/ and its siblings have the answers, report.html and report.pdf tell of them\n"_L1;
    output.flush();
    return flaws;
}
