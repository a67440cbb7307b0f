#include "locate/errorellipse.h"
#include "support/testmain.h"

#include <cmath>

using workbench::confidenceEllipse;
using workbench::Covariance;
using workbench::ErrorEllipse;
using workbench::standardEllipse;

class TestErrorEllipse : public QObject
{
    Q_OBJECT
private slots:
    void theAxesAreTheStandardDeviationsOfIndependentErrors()
    {
        const ErrorEllipse ellipse = standardEllipse({4.0, 9.0, 0.0});
        QCOMPARE(ellipse.semiMajor, 3.0);
        QCOMPARE(ellipse.semiMinor, 2.0);
        QCOMPARE(ellipse.azimuth, 0.0);
    }

    void theAzimuthOfTheMajorAxisCountsClockwiseFromNorth_data()
    {
        QTest::addColumn<double>("azimuth");
        for (double azimuth = 0.0; azimuth < 180.0; azimuth += 22.5)
            QTest::addRow("%g", azimuth) << azimuth;
    }

    void theAzimuthOfTheMajorAxisCountsClockwiseFromNorth()
    {
        QFETCH(double, azimuth);
        const double sine = std::sin(qDegreesToRadians(azimuth));
        const double cosine = std::cos(qDegreesToRadians(azimuth));
        // Standard deviations of 5 along the axis and 2 across it.
        const Covariance covariance{25.0 * sine * sine + 4.0 * cosine * cosine,
                                    25.0 * cosine * cosine + 4.0 * sine * sine, 21.0 * sine * cosine};
        const ErrorEllipse ellipse = standardEllipse(covariance);
        QCOMPARE(ellipse.semiMajor, 5.0);
        QCOMPARE(ellipse.semiMinor, 2.0);
        // 0 and 180 are the same axis.
        QVERIFY(std::abs(std::remainder(ellipse.azimuth - azimuth, 180.0)) < 1e-9);
    }

    void theAzimuthIsNever180()
    {
        const ErrorEllipse ellipse = standardEllipse({1.0, 2.0, -1e-18});
        QVERIFY(ellipse.azimuth >= 0.0);
        QVERIFY(ellipse.azimuth < 180.0);
    }

    void aCircleHasEqualAxes()
    {
        const ErrorEllipse ellipse = standardEllipse({9.0, 9.0, 0.0});
        QCOMPARE(ellipse.semiMajor, 3.0);
        QCOMPARE(ellipse.semiMinor, 3.0);
    }

    void anErrorAlongOneLineHasNoMinorAxis()
    {
        // Exactly singular; what rounding leaves of the smaller variance is not negative.
        const ErrorEllipse ellipse = standardEllipse({0.01, 0.09, 0.03});
        QVERIFY(std::abs(ellipse.semiMajor - std::sqrt(0.1)) < 1e-12);
        QVERIFY(ellipse.semiMinor >= 0.0);
        QVERIFY(ellipse.semiMinor < 1e-8);
    }

    void theConfidenceEllipseIsTheStandardEllipseTimesAFactor_data()
    {
        QTest::addColumn<double>("probability");
        QTest::addColumn<double>("factor");
        // Rayleigh quantiles.
        QTest::newRow("certainly not") << 0.0 << 0.0;
        QTest::newRow("standard ellipse") << 0.3934693402873666 << 1.0;
        QTest::newRow("50 percent") << 0.5 << 1.1774100225154747;
        QTest::newRow("90 percent") << 0.9 << 2.1459660262893472;
        QTest::newRow("95 percent") << 0.95 << 2.4477468306808161;
        QTest::newRow("99 percent") << 0.99 << 3.0348542587702925;
    }

    void theConfidenceEllipseIsTheStandardEllipseTimesAFactor()
    {
        QFETCH(double, probability);
        QFETCH(double, factor);
        const Covariance covariance{100.0, 50.0, 20.0};
        const ErrorEllipse standard = standardEllipse(covariance);
        const ErrorEllipse ellipse = confidenceEllipse(covariance, probability);
        QCOMPARE(ellipse.semiMajor, standard.semiMajor * factor);
        QCOMPARE(ellipse.semiMinor, standard.semiMinor * factor);
        QCOMPARE(ellipse.azimuth, standard.azimuth);
    }

    void certaintyTakesAnInfiniteEllipse()
    {
        const ErrorEllipse ellipse = confidenceEllipse({1.0, 1.0, 0.0}, 1.0);
        QVERIFY(std::isinf(ellipse.semiMajor));
        QVERIFY(std::isinf(ellipse.semiMinor));
    }

    void whatIsNoProbabilityHasNoAxes_data()
    {
        QTest::addColumn<double>("probability");
        QTest::newRow("negative") << -0.1;
        QTest::newRow("above one") << 1.5;
        QTest::newRow("not a number") << std::nan("");
    }

    void whatIsNoProbabilityHasNoAxes()
    {
        QFETCH(double, probability);
        const ErrorEllipse ellipse = confidenceEllipse({1.0, 1.0, 0.0}, probability);
        QVERIFY(std::isnan(ellipse.semiMajor));
        QVERIFY(std::isnan(ellipse.semiMinor));
    }
};

DFL_TEST_MAIN_WITH(TestErrorEllipse, QCoreApplication)
#include "tst_errorellipse.moc"
