#include "fuzz/fuzzing.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <sys/mman.h>
#include <unistd.h>

namespace {

/// Refused inputs are what most inputs are: only what ends the program is worth a line.
void tellFatalOnly(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message)
{
    if (type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(message));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    tzset();
    qInstallMessageHandler(tellFatalOnly);
    // Never deleted: the fuzzer ends by exit(), when plugins are taken down before the application could be.
    static const QApplication* const application = new QApplication(*argc, *argv);
    return application != nullptr ? 0 : 1;
}

namespace fuzzing {

QByteArray bytes(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), static_cast<int>(size)};
}

QString text(const QByteArray& bytes)
{
    constexpr char16_t half = 0xD800;
    return QString::fromUtf8(bytes).replace(QChar(QChar::ReplacementCharacter), QChar(half));
}

MemoryFile::MemoryFile(const QByteArray& content)
    : m_descriptor(memfd_create("input", MFD_CLOEXEC))
{
    if (m_descriptor < 0 || write(m_descriptor, content.constData(), static_cast<std::size_t>(content.size())) < 0)
        qFatal("There is no memory for a file");
}

MemoryFile::~MemoryFile()
{
    close(m_descriptor);
}

QString MemoryFile::path() const
{
    return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor);
}

void fail(const char* promise, const char* file, int line)
{
    std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, promise);
    std::abort();
}

} // namespace fuzzing
