#include "app/resultfeed.h"

#include "drivers/dfdriver.h"

#include <utility>

namespace workbench {

ResultFeed::ResultFeed(const DfDriver& driver, QObject* parent)
    : QObject(parent)
{
    m_frame.setSingleShot(true);
    m_frame.setInterval(frameTime);
    connect(&m_frame, &QTimer::timeout, this, &ResultFeed::flush);
    connect(&driver, &DfDriver::resultPublished, this, [this, &driver](const DfResult& result) {
        m_waiting.results.push_back(result);
        m_waiting.history = driver.publishedHistory();
        m_waiting.qualityThreshold = driver.settings().qualityThreshold;
        if (!m_frame.isActive())
            flush();
    });
}

void ResultFeed::flush()
{
    if (m_waiting.results.empty())
        return;
    m_frame.start();
    emit arrived(std::exchange(m_waiting, {}));
}

} // namespace workbench
