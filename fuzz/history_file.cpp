// Files of results with any bytes in them: opened, read and written, or refused with a sentence and left as they are.

#include "fuzz/fuzzing.h"
#include "history/resultfile.h"

#include <QFile>
#include <QTemporaryDir>

using namespace workbench;

namespace {

const std::atomic<bool> notCancelled{false};

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    FUZZ_REQUIRE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

DfResult newResult()
{
    DfResult result;
    result.date = QDate(2024, 5, 17);
    result.time = QTime(12, 0);
    StationResult station;
    station.stationId = 1;
    station.stationName = QStringLiteral("North");
    station.azimuth = 45.0;
    result.stations.push_back(station);
    return result;
}

void requireSentence(const ResultFileError& error, const QString& path)
{
    const QString beginning = path + QLatin1String(": cannot be ");
    FUZZ_REQUIRE(error.sentence().startsWith(beginning));
    const int reason = error.sentence().indexOf(QLatin1String(": "), beginning.size());
    FUZZ_REQUIRE(reason > 0 && reason + 2 < error.sentence().size());
}

/// What can be read can be added to, or it is told why not.
void use(ResultFile& store)
{
    const ResultAnswer before = store.find({}, notCancelled);
    for (const DfResult& result : before.results)
        FUZZ_REQUIRE(ResultFile::objection(result).isEmpty());
    store.append(newResult());
    const ResultAnswer after = store.find({}, notCancelled);
    FUZZ_REQUIRE(!after.results.empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("store"));
    const QByteArray content = fuzzing::bytes(data, size);
    QFile file(path);
    FUZZ_REQUIRE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    bool isOpen = false;
    try {
        ResultFile store(path, {});
        isOpen = true;
        use(store);
    } catch (const ResultFileError& error) {
        requireSentence(error, path);
        FUZZ_REQUIRE(isOpen || contentOf(path) == content);
    }
    return 0;
}
