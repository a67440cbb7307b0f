#include "map/mapbackground.h"

#include "filework/filework.h"
#include "map/mapscene.h"
#include "map/planeshapes.h"

#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <cmath>

namespace workbench {

namespace {

using Shapes = std::shared_ptr<const std::vector<GeoShape>>;
using Plane = std::shared_ptr<const std::vector<PlaneShape>>;

QString sentence(const QString& file, const QString& reason)
{
    return MapBackground::tr("%1: the background cannot be shown: %2.").arg(file, reason);
}

/// The bytes of a file, or why there are none.
std::variant<QByteArray, QString> readBytes(const QString& name, const GeoJsonProgress& goesOn)
{
    const QFileInfo info(name);
    if (info.exists() && !info.isFile())
        return MapBackground::tr("it is not a file"); // reading from a device may never end
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    if (file.size() > GeoJson::largestText)
        return MapBackground::tr("it is larger than %1 bytes").arg(GeoJson::largestText);
    constexpr qint64 block = 1048576; // bytes
    QByteArray bytes;
    while (!file.atEnd() && bytes.size() <= GeoJson::largestText) {
        if (!goesOn(static_cast<double>(bytes.size()) / static_cast<double>(std::max<qint64>(1, file.size()))))
            return QString();
        const QByteArray next = file.read(block);
        if (next.isEmpty())
            return file.errorString();
        bytes += next;
    }
    return bytes;
}

QString omissionText(const GeoJson& content)
{
    QStringList reasons = content.omissions;
    if (content.omitted > reasons.size())
        reasons += QStringLiteral("…");
    return MapBackground::tr("Left out: %1").arg(content.omitted) + QStringLiteral(" (") +
           reasons.join(QStringLiteral("; ")) + QStringLiteral(").");
}

bool isSamePlane(const MapProjection& a, const MapProjection& b)
{
    return a.centre().latitude == b.centre().latitude && a.centre().longitude == b.centre().longitude;
}

} // namespace

/// What both threads know of something that is being done.
struct MapBackground::Task
{
    std::atomic<bool> isCancelled{false};
    std::atomic<int> percent{0};

    /// Of a part of the work.
    [[nodiscard]] GeoJsonProgress goesOn(double begin, double end)
    {
        return [this, begin, end](double share) {
            percent = static_cast<int>(std::lround(begin + share * (end - begin)));
            return !isCancelled;
        };
    }
};

/// Shapes and where they lie on a plane, or why there are none.
struct MapBackground::Outcome
{
    Shapes shapes;
    MapProjection projection{{}};
    Plane plane;
    QString reason;
    QString remark; // on what is not shown
};

MapBackground::MapBackground(MapScene& scene, QObject* parent)
    : QObject(parent)
    , m_scene(scene)
    , m_files(new FileWork(this))
{
    constexpr int interval = 50; // ms
    m_progressTimer.setInterval(interval);
    connect(&m_progressTimer, &QTimer::timeout, this, [this] { emit progressed(m_reading->percent); });
    connect(&m_scene, &MapScene::projectionChanged, this, &MapBackground::putOnPlane);
}

MapBackground::~MapBackground()
{
    // Nobody will want what they come to.
    for (const auto& task : {m_reading, m_projecting}) {
        if (task)
            task->isCancelled = true;
    }
}

void MapBackground::open(const QString& file)
{
    cancel();
    m_reading = std::make_shared<Task>();
    m_progressTimer.start();
    emit readingChanged(true);
    const auto work = [file, task = m_reading, projection = m_scene.projection()]() -> Outcome {
        Outcome outcome;
        outcome.projection = projection;
        const auto bytes = readBytes(file, task->goesOn(0, 10));
        if (const auto* const reason = std::get_if<QString>(&bytes)) {
            outcome.reason = *reason;
            return outcome;
        }
        auto content = parseGeoJson(std::get<QByteArray>(bytes), task->goesOn(20, 60));
        if (const auto* const reason = std::get_if<QString>(&content)) {
            outcome.reason = *reason;
            return outcome;
        }
        auto& geoJson = std::get<GeoJson>(content);
        if (geoJson.omitted > 0)
            outcome.remark = omissionText(geoJson);
        outcome.shapes = std::make_shared<const std::vector<GeoShape>>(std::move(geoJson.shapes));
        if (auto plane = onPlane(*outcome.shapes, projection, task->goesOn(60, 100)))
            outcome.plane = std::make_shared<const std::vector<PlaneShape>>(*std::move(plane));
        return outcome;
    };
    m_files->run(work, [this, file, task = m_reading](const Outcome& outcome) { take(file, task, outcome); });
}

void MapBackground::take(const QString& file, const std::shared_ptr<Task>& task, const Outcome& outcome)
{
    if (task != m_reading)
        return; // given up
    endReading();
    if (!outcome.shapes) {
        emit finished(false, sentence(file, outcome.reason));
        tellWhenSettled();
        return;
    }
    if (m_projecting)
        std::exchange(m_projecting, nullptr)->isCancelled = true;
    const bool wasShown = isShown();
    m_shapes = outcome.shapes;
    if (isSamePlane(outcome.projection, m_scene.projection()))
        m_scene.setBackground(*outcome.plane);
    else
        putOnPlane();
    if (!wasShown)
        emit shownChanged(true);
    // Concatenated: a file's name and content may hold what looks like a place marker.
    QString text = file + tr(": shown as background (shapes: %1).").arg(m_shapes->size());
    if (!outcome.remark.isEmpty())
        text += QLatin1Char(' ') + outcome.remark;
    emit finished(true, text);
    tellWhenSettled();
}

void MapBackground::putOnPlane()
{
    if (m_projecting)
        std::exchange(m_projecting, nullptr)->isCancelled = true;
    if (!m_shapes)
        return;
    m_projecting = std::make_shared<Task>();
    const auto work = [shapes = m_shapes, task = m_projecting, projection = m_scene.projection()]() -> Plane {
        auto plane = onPlane(*shapes, projection, task->goesOn(0, 100));
        return plane ? std::make_shared<const std::vector<PlaneShape>>(*std::move(plane)) : nullptr;
    };
    m_files->run(work, [this, task = m_projecting](const Plane& plane) {
        if (task != m_projecting)
            return;
        m_projecting = nullptr;
        m_scene.setBackground(*plane);
        tellWhenSettled();
    });
}

void MapBackground::cancel()
{
    if (!m_reading)
        return;
    m_reading->isCancelled = true;
    endReading();
    tellWhenSettled();
}

void MapBackground::tellWhenSettled()
{
    if (isSettled())
        emit settled();
}

void MapBackground::endReading()
{
    m_reading = nullptr;
    m_progressTimer.stop();
    emit readingChanged(false);
}

void MapBackground::remove()
{
    cancel();
    if (!m_shapes)
        return;
    m_shapes = nullptr;
    putOnPlane();
    m_scene.setBackground({});
    emit shownChanged(false);
}

} // namespace workbench
