#include "map/graticule.h"
#include "map/mapcolors.h"
#include "map/mapformats.h"

#include "support/testmain.h"

#include <QSet>

#include <algorithm>
#include <cmath>

using namespace workbench;

namespace {

std::vector<GraticuleLine> linesAround(const GeoPosition& centre, double width, double height)
{
    return graticule(MapProjection(centre), QRectF(-width / 2.0, -height / 2.0, width, height), width / 800.0);
}

QStringList labels(const std::vector<GraticuleLine>& lines, bool meridians)
{
    QStringList result;
    for (const GraticuleLine& line : lines) {
        if (line.isMeridian == meridians)
            result += line.label;
    }
    return result;
}

} // namespace

class TestGraticule : public QObject
{
    Q_OBJECT
private slots:
    void linesStandAtWholeSteps()
    {
        const auto lines = linesAround({50.0, 12.0}, 80e3, 60e3);
        const QStringList parallels = labels(lines, false);
        QVERIFY2(parallels.contains(QStringLiteral("49.9° N")), qPrintable(parallels.join(',')));
        QVERIFY(parallels.contains(QStringLiteral("50.0° N")));
        QVERIFY(!parallels.contains(QStringLiteral("49.9° S")));
        const QStringList meridians = labels(lines, true);
        QVERIFY2(meridians.contains(QStringLiteral("12.0° E")), qPrintable(meridians.join(',')));
        QVERIFY(parallels.size() < 15);
        QVERIFY(meridians.size() < 15);
    }

    void linesReachBeyondTheAreaOnBothSides()
    {
        for (const GraticuleLine& line : linesAround({50.0, 12.0}, 80e3, 60e3)) {
            const QRectF extent = line.points.boundingRect();
            if (line.isMeridian)
                QVERIFY(extent.top() < -30e3 && extent.bottom() > 30e3);
            else
                QVERIFY(extent.left() < -40e3 && extent.right() > 40e3);
        }
    }

    void parallelsAreAtLeast90PixelsApart_data()
    {
        QTest::addColumn<double>("width");
        for (double width = 1e3; width < 2e7; width *= 3.7)
            QTest::addRow("%g km", width / 1000.0) << width;
    }

    void parallelsAreAtLeast90PixelsApart()
    {
        QFETCH(double, width);
        const MapProjection projection({50.0, 12.0});
        std::vector<double> latitudes;
        for (const GraticuleLine& line : linesAround({50.0, 12.0}, width, width)) {
            if (!line.isMeridian)
                latitudes.push_back(projection.toEarth(line.points.first())->latitude);
        }
        std::sort(latitudes.begin(), latitudes.end());
        QVERIFY(latitudes.size() >= 2 || width < 2e3);
        for (std::size_t i = 1; i < latitudes.size(); ++i) {
            const double pixels = (latitudes[i] - latitudes[i - 1]) * 111e3 / (width / 800.0);
            QVERIFY2(pixels > 89.0, qPrintable(QString::number(pixels)));
        }
    }

    void theDateLineIsCrossedWithoutAGap()
    {
        const QStringList meridians = labels(linesAround({-18.0, 180.0}, 400e3, 300e3), true);
        QVERIFY2(meridians.contains(QStringLiteral("180°")), qPrintable(meridians.join(',')));
        QVERIFY(meridians.contains(QStringLiteral("179.0° E")) && meridians.contains(QStringLiteral("179.0° W")));
    }

    void aroundAPoleMeridiansStandAllTheWayRoundOnce()
    {
        const auto lines = linesAround({90.0, 0.0}, 400e3, 400e3);
        const QStringList meridians = labels(lines, true);
        QVERIFY(meridians.contains(QStringLiteral("0°")) && meridians.contains(QStringLiteral("180°")));
        QCOMPARE(QSet<QString>(meridians.begin(), meridians.end()).size(), meridians.size());
        QVERIFY(meridians.size() >= 12 && meridians.size() <= 41);
        QVERIFY(!labels(lines, false).contains(QStringLiteral("90° N")));
    }

    void theWholeEarthHasItsEquatorAndMeridiansOnce()
    {
        const auto lines = linesAround({0.0, 0.0}, 60e6, 60e6);
        QVERIFY(labels(lines, false).contains(QStringLiteral("0°")));
        const QStringList meridians = labels(lines, true);
        QCOMPARE(meridians.size(), 12);
        QCOMPARE(QSet<QString>(meridians.begin(), meridians.end()).size(), 12);
    }

    void beyondTheEdgeOfTheMapThereAreNoLines()
    {
        QVERIFY(graticule(MapProjection({50.0, 6.0}), QRectF(30e6, 30e6, 1e6, 1e6), 1000.0).empty());
    }

    void theScaleBarIsTheLongestOfItsKindThatFits_data()
    {
        QTest::addColumn<double>("metresPerPixel");
        QTest::addColumn<double>("length");
        QTest::addColumn<QString>("text");
        QTest::newRow("exactly") << 1.0 << 200.0 << "200 m";
        QTest::newRow("just too long") << 0.99 << 100.0 << "100 m";
        QTest::newRow("five") << 26.0 << 5000.0 << "5 km";
        QTest::newRow("ten") << 51.0 << 10000.0 << "10 km";
        QTest::newRow("whole earth") << 80000.0 << 1e7 << "10000 km";
    }

    void theScaleBarIsTheLongestOfItsKindThatFits()
    {
        QFETCH(double, metresPerPixel);
        QFETCH(double, length);
        QFETCH(QString, text);
        const ScaleBar bar = scaleBar(metresPerPixel, 200.0);
        QCOMPARE(bar.length, length);
        QCOMPARE(bar.text, text);
    }

    void aNameFromOutsideIsALineOfBoundedLength()
    {
        QCOMPARE(stationText(QString(1000000, QLatin1Char('a'))).size(), 60);
    }

    void whatRoundsToZeroHasNoSign()
    {
        QCOMPARE(fixedText(-0.04, 1), QStringLiteral("0.0"));
        QCOMPARE(fixedText(-0.0, 0), QStringLiteral("0"));
        QCOMPARE(fixedText(-0.06, 1), QStringLiteral("-0.1"));
        QCOMPARE(fixedText(0.04, 1), QStringLiteral("0.0"));
        QCOMPARE(coordinatesText({-1e-9, -1e-9}), QStringLiteral("0.0000000, 0.0000000"));
        QCOMPARE(positionText({-1e-9, -1e-9}), QStringLiteral("0.00000° N  0.00000° E"));
    }

    void azimuthsStayBelow360()
    {
        QCOMPARE(azimuthText(77.3), QStringLiteral("77.3°"));
        QCOMPARE(azimuthText(359.94), QStringLiteral("359.9°"));
        QCOMPARE(azimuthText(359.96), QStringLiteral("0.0°"));
    }

    void positionsAreWrittenWithHemispheres()
    {
        QCOMPARE(positionText({50.0906117, 6.6478048}), QStringLiteral("50.09061° N  6.64780° E"));
        QCOMPARE(positionText({-18.5, 180.5}), QStringLiteral("18.50000° S  179.50000° W"));
    }

    void coordinatesAreWrittenForOtherPrograms()
    {
        QCOMPARE(coordinatesText({50.0906117, 6.6478048}), QStringLiteral("50.0906117, 6.6478048"));
        QCOMPARE(coordinatesText({-18.5, 180.5}), QStringLiteral("-18.5000000, -179.5000000"));
    }

    void labelsHaveTheDecimalsOfTheStep()
    {
        QCOMPARE(latitudeText(50.0, 0.001), QStringLiteral("50.000° N"));
        QCOMPARE(latitudeText(-50.0, 10.0), QStringLiteral("50° S"));
        QCOMPARE(latitudeText(50.5, 0.5), QStringLiteral("50.5° N"));
        QCOMPARE(latitudeText(1e-15, 0.1), QStringLiteral("0°"));
        QCOMPARE(longitudeText(-180.0, 1.0), QStringLiteral("180°"));
        QCOMPARE(longitudeText(181.0, 1.0), QStringLiteral("179° W"));
    }

    void sizesAndProbabilitiesAreWrittenForPeople()
    {
        QCOMPARE(sizeText({2368.8, 1831.4, 0.0}), QStringLiteral("2369 m × 1831 m"));
        QCOMPARE(percentText(0.95), QStringLiteral("95 %"));
        QCOMPARE(percentText(0.999), QStringLiteral("99.9 %"));
    }

    void qualityIsColouredFromTheThresholdUp()
    {
        const MapColors colors = MapColors::fitting(QPalette());
        QCOMPARE(colors.ofQuality(40.0, 40), colors.poorest);
        QCOMPARE(colors.ofQuality(100.0, 40), colors.best);
        QCOMPARE(colors.ofQuality(100.0, 100), colors.best);
        QCOMPARE(colors.ofQuality(0.0, std::nullopt), colors.poorest);
        QCOMPARE(colors.ofQuality(std::nullopt, 40), colors.unrated);
        QVERIFY(colors.ofQuality(70.0, 40) != colors.best && colors.ofQuality(70.0, 40) != colors.poorest);
    }

    void aDarkDesktopHasADarkMap()
    {
        QPalette dark;
        dark.setColor(QPalette::Window, QColor(40, 40, 40));
        QPalette light;
        light.setColor(QPalette::Window, QColor(240, 240, 240));
        QVERIFY(MapColors::fitting(dark).ground.lightness() < 60);
        QVERIFY(MapColors::fitting(light).ground.lightness() > 220);
    }
};

DFL_TEST_MAIN(TestGraticule)
#include "tst_graticule.moc"
