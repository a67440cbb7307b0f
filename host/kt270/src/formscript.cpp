#include "formscript.h"

#include <QCoreApplication>
#include <QQmlEngine>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace KT270 {

namespace {

constexpr std::chrono::seconds longestRun(1);

// What runs after the script has ended, or waits, would escape the watchdog.
const char* const removedObjects[] = {"Promise", "Atomics", "SharedArrayBuffer"};

/// Interrupts an engine that is still busy when the time is over.
class Watchdog
{
public:
    explicit Watchdog(QJSEngine& engine)
        : m_engine(engine)
        , m_thread([this] { Watch(); })
    {
    }

    ~Watchdog()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_done = true;
        }
        m_wakeUp.notify_one();
        m_thread.join();
        m_engine.setInterrupted(false);
    }

    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    void Watch()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (!m_wakeUp.wait_for(lock, longestRun, [this] { return m_done; }))
            m_engine.setInterrupted(true);
    }

    QJSEngine& m_engine;
    std::mutex m_mutex;
    std::condition_variable m_wakeUp;
    bool m_done = false;
    std::thread m_thread; // last: it uses the others
};

} // namespace

void FormScriptApi::setEnabled(const QString& field, bool enable)
{
    if (m_fields.contains(field))
        requests.push_back({field, enable});
    else
        m_engine.throwError(QJSValue::RangeError,
                            QCoreApplication::translate("FormScript", "no field \"%1\"").arg(field));
}

FormScript::FormScript(QSet<QString> fields)
    : m_api(m_engine, std::move(fields))
{
    QQmlEngine::setObjectOwnership(&m_api, QQmlEngine::CppOwnership);
    QJSValue global = m_engine.globalObject();
    for (const char* const name : removedObjects)
        global.deleteProperty(QLatin1String(name));
    QJSValue form = m_engine.newObject();
    form.setProperty(QStringLiteral("setEnabled"), m_engine.newQObject(&m_api).property(QStringLiteral("setEnabled")));
    global.setProperty(QStringLiteral("form"), form);
}

ScriptOutcome FormScript::Run(const QString& code, int firstLine)
{
    // The engine does not tell a thrown text or number from a result; only a script that comes to its end has this one.
    const QString endMark = QStringLiteral("the script has ended");
    m_api.requests.clear();
    QJSValue result;
    bool isInterrupted = false;
    {
        const Watchdog watchdog(m_engine);
        result = m_engine.evaluate(code + QStringLiteral("\n;\"%1\";").arg(endMark), QString(), firstLine);
        isInterrupted = m_engine.isInterrupted();
    }
    ScriptOutcome outcome;
    if (isInterrupted) {
        outcome.error = QCoreApplication::translate("FormScript", "end within a second expected");
        outcome.line = firstLine;
    } else if (result.isError()) {
        outcome.error = result.toString();
        // An error behind the last line is one of the code's end; some errors know no line.
        const int line = result.property(QStringLiteral("lineNumber")).toInt();
        outcome.line = std::clamp(line, firstLine, firstLine + code.count(QLatin1Char('\n')));
    } else if (result.toString() != endMark) {
        outcome.error = QCoreApplication::translate("FormScript", "uncaught %1").arg(result.toString());
        outcome.line = firstLine;
    } else {
        outcome.requests = std::move(m_api.requests);
    }
    return outcome;
}

} // namespace KT270
