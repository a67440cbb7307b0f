// Makes the numbered pictures of the operator's guide from the real widgets: guide-pictures FOLDER

#include "app/mainwindow.h"
#include "app/measuringjob.h"
#include "app/screenshot.h"
#include "app/session.h"
#include "drivers/scenario.h"
#include "drivers/simulatednetwork.h"

#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QPainter>
#include <QScrollArea>
#include <QTemporaryDir>
#include <QToolBar>

#include <cstdio>
#include <cstdlib>

// Outside of any namespace, as the macro in it demands.
static void initResources()
{
    Q_INIT_RESOURCE(workbench);
}

namespace workbench {

namespace {

[[noreturn]] void fail(const QString& reason)
{
    std::fprintf(stderr, "%s\n", qPrintable(reason));
    std::exit(EXIT_FAILURE);
}

/// Where the numbers stand.
enum class Side
{
    Above,
    Right,
};

constexpr int margin = 34; // pixels, for the numbers
constexpr int radius = 11;
constexpr int gap = 8; // pixels, behind the last widget

QPoint onWidget(const QWidget* area, const QWidget* widget, Side side)
{
    const QPoint place =
        side == Side::Above ? QPoint(widget->width() / 2, 0) : QPoint(widget->width(), widget->height() / 2);
    return widget->mapTo(area, place);
}

void drawNumber(QPainter& painter, int number, QPoint centre, QPoint end)
{
    const QRect circle(centre - QPoint(radius, radius), QSize(2 * radius, 2 * radius));
    painter.setPen(QPen(Qt::darkRed, 2));
    painter.drawLine(centre, end);
    painter.setBrush(Qt::darkRed);
    painter.drawEllipse(circle);
    painter.setPen(Qt::white);
    painter.drawText(circle, Qt::AlignCenter, QString::number(number));
}

/// A picture of @p area, down and right to the last of the widgets with these object names, which are numbered from 1
/// in their order.
QImage numbered(QWidget* area, const QStringList& names, Side side)
{
    QList<const QWidget*> widgets;
    QRect shown(0, 0, 1, 1);
    for (const QString& name : names) {
        widgets += area->findChild<QWidget*>(name);
        if (widgets.last() == nullptr)
            fail(QStringLiteral("There is no widget named %1.").arg(name));
        shown |= QRect(widgets.last()->mapTo(area, QPoint(0, 0)), widgets.last()->size());
    }
    shown.adjust(0, 0, gap, gap);

    const bool isAbove = side == Side::Above;
    QImage picture(shown.size() + (isAbove ? QSize(0, margin) : QSize(margin, 0)), QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPoint origin(0, isAbove ? margin : 0);
    painter.drawPixmap(origin, area->grab(shown));
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(radius + 2);
    painter.setFont(font);
    int number = 0;
    for (const QWidget* const widget : qAsConst(widgets)) {
        const QPoint end = origin + onWidget(area, widget, side);
        const QPoint centre = isAbove ? QPoint(end.x(), margin / 2) : QPoint(shown.width() + margin / 2, end.y());
        drawNumber(painter, ++number, centre, end);
    }
    return picture;
}

void save(const QImage& picture, const QString& file)
{
    // Few colours, so the files are small.
    const QImage small = picture.convertToFormat(QImage::Format_Indexed8, Qt::ThresholdDither);
    if (const std::optional<QString> error = saveScreenshot(small, file))
        fail(*error);
}

void makePictures(const QDir& folder)
{
    Loaded<Scenario> scenario = loadScenario(QStringLiteral(":/scenarios/five-stations.json"));
    if (!scenario)
        fail(scenario.errors.join(QLatin1Char('\n')));
    const QTemporaryDir parameterSets;
    MainWindow window;
    Session session(std::make_unique<SimulatedNetwork>(*std::move(scenario.value), 1, Pacing::Immediate));
    window.follow(session);
    window.offerParameterSets(session, parameterSets.path());
    const QString component =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../lib/libDFLocateComponent.so");
    if (const auto error =
            session.start(component, [&window](QToolBar* toolBar, QWidget* panel) { window.place(toolBar, panel); }))
        fail(error->text());
    window.show();
    session.announceEnabled();
    MeasuringJob job(session);
    QObject::connect(&job, &MeasuringJob::failed, &fail);
    QObject::connect(&job, &MeasuringJob::finished, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    QMetaObject::invokeMethod(
        &job, [&job] { job.startShots(1); }, Qt::QueuedConnection);
    QCoreApplication::exec();

    save(numbered(session.toolBar(),
                  {QStringLiteral("DFStarter"), QStringLiteral("Led Label"), QStringLiteral("Level threshold"),
                   QStringLiteral("Quality threshold"), QStringLiteral("DF Mode"), QStringLiteral("DF Bandwidth"),
                   QStringLiteral("DF Averaging"), QStringLiteral("direction finder name"),
                   QStringLiteral("average bearing"), QStringLiteral("DetailedResults")},
                  Side::Above),
         folder.filePath(QStringLiteral("toolbar.png")));
    QWidget* const panel =
        window.findChild<QDockWidget*>(QStringLiteral("PanelDock"))->findChild<QScrollArea*>()->widget();
    save(numbered(panel,
                  {QStringLiteral("VCComboBoxWorkflow"), QStringLiteral("VCComboBoxType"),
                   QStringLiteral("VCComboBoxActivity"), QStringLiteral("VCComboBoxActivityTrigger"),
                   QStringLiteral("DFMode"), QStringLiteral("Bandwidth"), QStringLiteral("Averaging"),
                   QStringLiteral("Detail"), QStringLiteral("Detail/QualityThreshold"),
                   QStringLiteral("Detail/LevelThreshold"), QStringLiteral("DFFrequencyOffset")},
                  Side::Right),
         folder.filePath(QStringLiteral("panel.png")));
}

} // namespace

} // namespace workbench

int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    initResources();
    if (argc != 2 || !QFileInfo(QString::fromLocal8Bit(argv[1])).isDir())
        workbench::fail(QStringLiteral("usage: guide-pictures FOLDER"));
    workbench::makePictures(QDir(QString::fromLocal8Bit(argv[1])));
    return EXIT_SUCCESS;
}
