#include "bearings.h"
#include "drivers/recording.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>

using namespace testsupport;

/// Fixes of a survey with real bearings on transmitters at known positions. It is not part of this project; the
/// variable DFLOCATE_SURVEY_DIR names the folder that holds it.
class TestSurveyFixes : public QObject
{
    Q_OBJECT
private slots:
    void fixesWithEqualWeightsAreAsNearToTheTruthAsTheirBearingsAllow_data()
    {
        QTest::addColumn<double>("sigma");
        // Equal weights give the same positions, whatever accuracy is assumed; the bearings are really good for 3.
        QTest::newRow("1 degree") << 1.0;
        QTest::newRow("3 degrees") << 3.0;
        QTest::newRow("5 degrees") << 5.0;
    }

    void fixesWithEqualWeightsAreAsNearToTheTruthAsTheirBearingsAllow()
    {
        QFETCH(double, sigma);
        const QString folder = qEnvironmentVariable("DFLOCATE_SURVEY_DIR");
        if (folder.isEmpty()) {
            qInfo("Left out: fixes of the recorded survey. DFLOCATE_SURVEY_DIR is not set.");
            return;
        }
        const auto survey = workbench::loadRecording(folder + QStringLiteral("/bearings-survey-2012.csv"));
        QVERIFY2(survey, qPrintable(survey.errors.join(QLatin1Char('\n'))));
        QCOMPARE(survey.value->shots.size(), std::size_t(78));

        std::vector<double> errors;
        double squares = 0.0;
        for (const workbench::DfResult& shot : survey.value->shots) {
            std::vector<Bearing> bearings;
            for (const workbench::StationResult& station : shot.stations)
                bearings.push_back({station.position.value(), station.azimuth.value(), sigma, false});
            const double error = distance(fixOf(bearings).position, shot.truth.value().position);
            errors.push_back(error);
            squares += error * error;
        }
        std::sort(errors.begin(), errors.end());
        COMPARE_NEAR(0.5 * (errors[38] + errors[39]), 102.33, 0.1);
        COMPARE_NEAR(std::sqrt(squares / 78.0), 170.07, 0.1);
    }
};

DFL_TEST_MAIN_WITH(TestSurveyFixes, QCoreApplication)
#include "tst_surveyfixes.moc"
