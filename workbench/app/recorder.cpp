#include "app/recorder.h"

#include "drivers/dfdriver.h"

#include <QSaveFile>

namespace workbench {

std::optional<QString> Recorder::obstacle(const QString& file)
{
    QSaveFile probe(file); // never committed
    if (probe.open(QIODevice::WriteOnly))
        return std::nullopt;
    return tr("%1: the recording cannot be written: %2.").arg(file, probe.errorString());
}

Recorder::Recorder(const DfDriver& driver, const QString& file, QObject* parent)
    : QObject(parent)
    , m_writer(file)
{
    connect(&driver, &DfDriver::resultPublished, this, &Recorder::append);
}

void Recorder::append(const DfResult& result)
{
    m_isEmpty = false;
    if (!m_failure && !m_writer.append(result))
        m_failure = m_writer.errorString();
}

std::optional<QString> Recorder::finish()
{
    if (!m_isEmpty && !m_failure && !m_writer.commit())
        m_failure = m_writer.errorString();
    return m_failure;
}

} // namespace workbench
