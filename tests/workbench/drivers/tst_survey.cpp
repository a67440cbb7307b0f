#include "drivers/dfdriver.h"
#include "drivers/recording.h"
#include "support/freshtree.h"
#include "support/testmain.h"
#include "textfile.h"

#include "valueframework/valueclasses/valueobservermacros.h"

#include <QSignalSpy>

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

} // namespace

class SurveyTest : public QObject
{
    Q_OBJECT
private slots:
    void everyBearingOfTheSurveyReachesTheResultValues();
};

/// The survey is not part of the project; whoever has it names its folder.
void SurveyTest::everyBearingOfTheSurveyReachesTheResultValues()
{
    const QString folder = qEnvironmentVariable("DFLOCATE_SURVEY_DIR");
    if (folder.isEmpty()) {
        QWARN("Left out, because DFLOCATE_SURVEY_DIR does not name the folder of bearings-survey-2012.csv: playing the "
              "312 bearings of the survey and comparing them with the result values.");
        return;
    }
    const QString file = folder + QStringLiteral("/bearings-survey-2012.csv");
    QVERIFY2(QFile::exists(file), qPrintable(file + QStringLiteral(" is missing")));
    // Read here by other means than those under test; the survey has no quoted fields.
    QList<QByteArray> lines = testsupport::TextFiles::content(file).trimmed().split('\n');
    lines.removeFirst();
    QCOMPARE(lines.size(), 312);
    const Loaded<Recording> loaded = loadRecording(file);
    QVERIFY2(loaded, qPrintable(loaded.errors.join(QLatin1Char('\n'))));
    QCOMPARE(loaded.value->shots.size(), std::size_t(78));
    QCOMPARE(loaded.value->stations.size(), std::size_t(4));

    const testsupport::FreshTree tree;
    DfDriver driver(std::make_unique<RecordedNetwork>(*loaded.value, RecordedDefaults{}, Pacing::Immediate),
                    QStringLiteral("/GUI/DFLocateHandler/"), QStringLiteral("/GUI/DFLocateComponent/Parameters/"));
    auto* commands = dynamic_cast<values::ValueSelection*>(
        values::Tree::Instance()->FindValue(QStringLiteral("/GUI/DFLocateHandler/Values/Commands")));
    QVERIFY(commands != nullptr);
    QSignalSpy published(&driver, &DfDriver::resultPublished);
    for (int shot = 0; shot < 78; ++shot) {
        if (shot == 0)
            commands->Select(9);
        else
            commands->HasChanged(ChangeContent, nullptr);
        QTRY_COMPARE(published.count(), shot + 1);
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
    QCOMPARE(driver.source().measurementsLeft(), std::optional<int>(0));
}

DFL_TEST_MAIN_WITH(SurveyTest, QCoreApplication)
#include "tst_survey.moc"
