// Stores a series of results: historywriter FILE FIRST COUNT STATIONS. Says "stored" for each one that is in the file.

#include "history/resultstore.h"
#include "historybench.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 5)
        return 2;
    const int first = arguments[2].toInt();
    const int count = arguments[3].toInt();
    const int stations = arguments[4].toInt();

    workbench::ResultStore store(arguments[1]);
    int handedOver = 0;
    int stored = 0;
    const auto handOver = [&] {
        // A few ahead, so that there is always one being written.
        while (handedOver < count && handedOver < stored + 5) {
            if (!store.store(historybench::resultOfSeries(first + handedOver, stations)))
                qFatal("%s", qPrintable(store.errorString()));
            ++handedOver;
        }
    };
    QObject::connect(&store, &workbench::ResultStore::stored, [&] {
        ++stored;
        std::puts("stored");
        std::fflush(stdout);
        handOver();
        if (stored == count)
            QCoreApplication::quit();
    });
    QObject::connect(&store, &workbench::ResultStore::failed,
                     [](const QString& reason) { QTextStream(stderr) << reason << '\n'; });
    handOver();
    return QCoreApplication::exec();
}
