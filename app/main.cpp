#include "app/mainwindow.h"

#include <QApplication>
#include <QIcon>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QCoreApplication::setOrganizationName(u"Orrinet"_s);
    QCoreApplication::setApplicationName(u"Orrinet"_s);

    // No file of the resource tree has this path: the icon stays empty, and the platform's own is shown.
    const QIcon icon(u":/icons/orrinet.svg"_s);
    QGuiApplication::setWindowIcon(icon);

    MainWindow window(nullptr);
    window.show();
    return QApplication::exec();
}
