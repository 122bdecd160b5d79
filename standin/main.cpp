#include "standin/chatendpoint.h"
#include "standin/respondent.h"
#include "standin/strictness.h"

#include <QCoreApplication>

#include <cstdio>

/// The endpoint as a program of its own, for programs that are tried where they are installed. Takes requests in the
/// clear, is as strict as the hosted service is reported to be, and stays until it is ended. Prints its address.
int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    standin::ChatEndpoint endpoint;
    endpoint.takePlainRequests();
    endpoint.answerWith(standin::strict(&standin::respond));
    std::printf("http://127.0.0.1:%d/v1\n", int(endpoint.port()));
    std::fflush(stdout);
    return QCoreApplication::exec();
}
