#include "app/paintpace.h"

#include "app/application.h"
#include "support/testmain.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QWidget>

#include <memory>

using workbench::PaintPace;

namespace {

/// Counts how often it is painted and asked to paint itself.
class CountingWindow final : public QWidget
{
public:
    int paints = 0;
    int requests = 0;

protected:
    bool event(QEvent* event) override
    {
        requests += event->type() == QEvent::UpdateRequest;
        return QWidget::event(event);
    }
    void paintEvent(QPaintEvent* /*event*/) override { ++paints; }
};

constexpr int forEver = 3600 * 1000; // ms

} // namespace

class TestPaintPace : public QObject
{
    Q_OBJECT
private slots:
    void aWindowThatHasRestedIsPaintedAtOnce();
    void whatChangesWhileAWindowRestsIsPaintedOnceAfterwards();
    void nothingIsPaintedAfterTheRestWhenNothingHasChanged();
    void eachWindowHasItsOwnPace();
    void aWindowMayGoWhileItIsPaintedOrRests();
    void windowsOfTheApplicationArePaintedAtThatPace();
};

void TestPaintPace::aWindowThatHasRestedIsPaintedAtOnce()
{
    PaintPace pace(nullptr, 1);
    CountingWindow window;
    int delivered = 0;
    pace.paint(window, [&] { ++delivered; });
    QCOMPARE(delivered, 1);
    pace.paint(window, [&] { ++delivered; });
    QCOMPARE(delivered, 1);
    QTRY_COMPARE(window.requests, 1); // has rested
    pace.paint(window, [&] { ++delivered; });
    QCOMPARE(delivered, 2);
}

void TestPaintPace::whatChangesWhileAWindowRestsIsPaintedOnceAfterwards()
{
    PaintPace pace(nullptr, 1);
    CountingWindow window;
    int delivered = 0;
    pace.paint(window, [&] { ++delivered; });
    for (int i = 0; i < 10; ++i)
        pace.paint(window, [&] { ++delivered; });
    QCOMPARE(delivered, 1);
    QTRY_COMPARE(window.requests, 1);
    QSignalSpy later(&window, &QWidget::windowTitleChanged);
    QTimer::singleShot(20, &window, [&] { window.setWindowTitle(QStringLiteral("later")); });
    QVERIFY(later.wait());
    QCOMPARE(window.requests, 1);
}

void TestPaintPace::nothingIsPaintedAfterTheRestWhenNothingHasChanged()
{
    PaintPace pace(nullptr, 1);
    CountingWindow still;
    CountingWindow changing;
    pace.paint(still, [] {});
    pace.paint(changing, [] {});
    pace.paint(changing, [] {});
    QTRY_COMPARE(changing.requests, 1); // its rest has begun after the other's
    QCOMPARE(still.requests, 0);
}

void TestPaintPace::eachWindowHasItsOwnPace()
{
    PaintPace pace(nullptr, forEver);
    CountingWindow first;
    CountingWindow second;
    int delivered = 0;
    pace.paint(first, [&] { ++delivered; });
    pace.paint(second, [&] { ++delivered; });
    QCOMPARE(delivered, 2);
}

void TestPaintPace::aWindowMayGoWhileItIsPaintedOrRests()
{
    PaintPace pace(nullptr, 1);
    QPointer<CountingWindow> painted = new CountingWindow;
    pace.paint(*painted, [&] { delete painted; });
    QVERIFY(painted == nullptr);

    auto resting = std::make_unique<CountingWindow>();
    pace.paint(*resting, [] {});
    pace.paint(*resting, [] {});
    resting.reset();

    // Another one may have the place in memory of the first two, and their rest is none of its business.
    alignas(CountingWindow) std::byte place[sizeof(CountingWindow)];
    for (int i = 0; i < 2; ++i) {
        auto* const window = new (place) CountingWindow;
        int delivered = 0;
        pace.paint(*window, [&] { ++delivered; });
        window->~CountingWindow();
        QCOMPARE(delivered, 1);
    }
}

void TestPaintPace::windowsOfTheApplicationArePaintedAtThatPace()
{
    CountingWindow window;
    window.show();
    QTRY_VERIFY(window.paints > 0);
    window.paints = 0;
    QElapsedTimer time;
    time.start();
    constexpr int changes = 2000;
    for (int i = 0; i < changes; ++i) {
        window.update();
        QCoreApplication::processEvents();
    }
    // As many as there was time for, and those at both ends.
    QVERIFY2(window.paints <= time.elapsed() / (PaintPace::frameTime - 1) + 2,
             qPrintable(QString::number(window.paints)));
    window.paints = 0;
    window.update();
    QTRY_COMPARE(window.paints, 1);
}

DFL_TEST_MAIN_WITH(TestPaintPace, workbench::Application)
#include "tst_paintpace.moc"
