#include "drivers/dfdriver.h"
#include "drivers/geodesy.h"
#include "drivers/recording.h"
#include "support/freshtree.h"
#include "support/testmain.h"
#include "textfile.h"

#include "valueframework/valueclasses/valueobservermacros.h"

#include <QSignalSpy>

#include <algorithm>
#include <cmath>

using namespace workbench;

namespace {

const QString resultRoot = QStringLiteral("/GUI/DFLocateHandler/Values/Result/");

const values::ValueSelection& selection(const char* name)
{
    auto* value =
        dynamic_cast<values::ValueSelection*>(values::Tree::Instance()->FindValue(resultRoot + QLatin1String(name)));
    if (value == nullptr)
        qFatal("There is no selection %s", name);
    return *value;
}

double coordinate(const char* name)
{
    auto* value =
        dynamic_cast<values::DoubleValue*>(values::Tree::Instance()->FindValue(resultRoot + QLatin1String(name)));
    if (value == nullptr || value->GetState() != values::StateOrdinary)
        qFatal("%s is not in use", name);
    return value->GetValue();
}

/// The survey is not part of the project; whoever has it names its folder. Empty when nobody does.
QString surveyFile()
{
    const QString folder = qEnvironmentVariable("DFLOCATE_SURVEY_DIR");
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/bearings-survey-2012.csv");
}

/// A driver that plays the survey, and an operator who asks for one shot after the other.
class Player
{
public:
    explicit Player(const Recording& recording)
        : driver(std::make_unique<RecordedNetwork>(recording, RecordedDefaults{}, Pacing::Immediate),
                 QStringLiteral("/GUI/DFLocateHandler/"), QStringLiteral("/GUI/DFLocateComponent/Parameters/"))
        , published(&driver, &DfDriver::resultPublished)
    {
    }

    /// False when no result comes.
    bool playNext()
    {
        auto* const commands = dynamic_cast<values::ValueSelection*>(
            values::Tree::Instance()->FindValue(QStringLiteral("/GUI/DFLocateHandler/Values/Commands")));
        published.clear();
        if (commands->GetCurrentKey() == 9)
            commands->HasChanged(ChangeContent, nullptr);
        else
            commands->Select(9);
        return published.count() == 1 || published.wait();
    }

    const testsupport::FreshTree tree;
    DfDriver driver;
    QSignalSpy published;
};

} // namespace

class SurveyTest : public QObject
{
    Q_OBJECT
private slots:
    void everyBearingOfTheSurveyReachesTheResultValues();
    void everyShotOfTheSurveyHasAFixNearTheTruth();
};

void SurveyTest::everyBearingOfTheSurveyReachesTheResultValues()
{
    const QString file = surveyFile();
    if (file.isEmpty()) {
        QWARN("Left out, because DFLOCATE_SURVEY_DIR does not name the folder of bearings-survey-2012.csv: playing the "
              "312 bearings of the survey and comparing them with the result values.");
        return;
    }
    QVERIFY2(QFile::exists(file), qPrintable(file + QStringLiteral(" is missing")));
    // Read here by other means than those under test; the survey has no quoted fields.
    QList<QByteArray> lines = testsupport::TextFiles::content(file).trimmed().split('\n');
    lines.removeFirst();
    QCOMPARE(lines.size(), 312);
    const Loaded<Recording> loaded = loadRecording(file);
    QVERIFY2(loaded, qPrintable(loaded.errors.join(QLatin1Char('\n'))));
    QCOMPARE(loaded.value->shots.size(), std::size_t(78));
    QCOMPARE(loaded.value->stations.size(), std::size_t(4));

    Player player(*loaded.value);
    for (int shot = 0; shot < 78; ++shot) {
        QVERIFY(player.playNext());
        QCOMPARE(selection("SelectedDF").GetItemCount(), 4);
        QCOMPARE(selection("Azimuth").GetItemCount(), 4);
        QCOMPARE(selection("Level").GetItemCount(), 0);
        QCOMPARE(selection("Quality").GetItemCount(), 0);
        for (int i = 0; i < 4; ++i) {
            const QList<QByteArray> fields = lines.at(4 * shot + i).split(',');
            const values::SelectionItem* station = selection("SelectedDF").GetItem(i);
            QCOMPARE(station->GetName(), QString::fromUtf8(fields.at(3)));
            const int key = station->GetKey();
            const double azimuth = fields.at(6).toDouble();
            QVERIFY(std::abs(selection("Azimuth").GetItemNameForKey(key).toDouble() - azimuth) <= 0.0500001);
            QCOMPARE(selection("Azimuth").GetItem(i)->GetValue(), azimuth);
            QVERIFY(std::abs(selection("DFLatitude").GetItemNameForKey(key).toDouble() - fields.at(4).toDouble()) <
                    1e-6);
            QVERIFY(std::abs(selection("DFLongitude").GetItemNameForKey(key).toDouble() - fields.at(5).toDouble()) <
                    1e-6);
        }
    }
    QCOMPARE(player.driver.source().measurementsLeft(), std::optional<int>(0));
}

void SurveyTest::everyShotOfTheSurveyHasAFixNearTheTruth()
{
    const QString file = surveyFile();
    if (file.isEmpty()) {
        QWARN("Left out, because DFLOCATE_SURVEY_DIR does not name the folder of bearings-survey-2012.csv: comparing "
              "the 78 fixes of the survey with the true positions.");
        return;
    }
    const Loaded<Recording> loaded = loadRecording(file);
    QVERIFY2(loaded, qPrintable(loaded.errors.join(QLatin1Char('\n'))));
    Player player(*loaded.value);
    std::vector<double> errors;
    double squares = 0.0;
    for (const DfResult& shot : loaded.value->shots) {
        QVERIFY(player.playNext());
        const GeoPosition fix{coordinate("AveragePositionLatitude"), coordinate("AveragePositionLongitude")};
        const double error = geodesy::line(shot.truth.value().position, fix).distance;
        errors.push_back(error);
        squares += error * error;
    }
    QCOMPARE(errors.size(), std::size_t(78));
    std::sort(errors.begin(), errors.end());
    const double median = 0.5 * (errors[38] + errors[39]);
    const double rms = std::sqrt(squares / 78.0);
    QVERIFY2(std::abs(median - 102.33) < 0.1, qPrintable(QString::number(median)));
    QVERIFY2(std::abs(rms - 170.07) < 0.1, qPrintable(QString::number(rms)));
}

DFL_TEST_MAIN_WITH(SurveyTest, QCoreApplication)
#include "tst_survey.moc"
