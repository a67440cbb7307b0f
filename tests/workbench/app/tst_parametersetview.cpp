#include "app/parametersetview.h"

#include "filework/filework.h"
#include "guicomponentbase/guicomponentcommon.h"
#include "guicomponentbase/guicomponenttools.h"
#include "support/freshtree.h"
#include "valueframework/valueclasses/value.h"
#include "workbench/filework/busydisk.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTemporaryDir>

using testsupport::BusyDisk;
using VelmarGui::GuiComponentCommon;
using VelmarGui::GuiComponentTools;
using VelmarGui::ParameterSetStore;
using workbench::ParameterSetView;

namespace {

const QString component = QStringLiteral("/GUI/SomeComponent/");
const QString set = QStringLiteral("DF_Settings");
const QString reported = QStringLiteral("<DF_Settings><Bandwidth>600</Bandwidth></DF_Settings>");
const QString kept = QStringLiteral("<DF_Settings><Bandwidth>300</Bandwidth></DF_Settings>");

} // namespace

/// A component with a parameter set: keeps what it is given, reports when asked.
class SomeComponent : public QObject
{
    Q_OBJECT
public:
    explicit SomeComponent(GuiComponentCommon* common)
        : m_tools(common, component)
    {
        m_tools.AddParameterSet(set, this, SLOT(take(values::ValueBase*)));
        connect(common, &GuiComponentCommon::si_parametersRequested, this, [this] { report(reported); });
    }

    void report(const QString& xml) { m_tools.UpdateParameterSet(set, xml); }

    QStringList taken;

public slots:
    void take(values::ValueBase* value) { taken += value->GetStringValue(); }

private:
    GuiComponentTools m_tools;
};

class TestParameterSetView : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<GuiComponentCommon> m_common;
    std::unique_ptr<SomeComponent> m_component;
    std::unique_ptr<ParameterSetView> m_view;
    QStringList m_messages;

    [[nodiscard]] ParameterSetStore store() const { return ParameterSetStore(m_folder->path()); }
    template <typename T>
    [[nodiscard]] T* child(const char* name) const
    {
        auto* const found = m_view->findChild<T*>(QLatin1String(name));
        if (found == nullptr)
            qFatal("There is no %s", name);
        return found;
    }
    [[nodiscard]] QPushButton* button(const char* name) const { return child<QPushButton>(name); }
    [[nodiscard]] QListWidget* list() const { return child<QListWidget>("ParameterSetNames"); }
    [[nodiscard]] QLineEdit* name() const { return child<QLineEdit>("ParameterSetName"); }
    [[nodiscard]] QString state() const { return child<QLabel>("ParameterSetState")->text(); }
    [[nodiscard]] QString text() const { return child<QPlainTextEdit>("ParameterSetText")->toPlainText(); }
    [[nodiscard]] QStringList names() const
    {
        QStringList names;
        for (int row = 0; row < list()->count(); ++row)
            names += list()->item(row)->text();
        return names;
    }

    void open(bool isOffline = false)
    {
        m_view = std::make_unique<ParameterSetView>(*m_common, component, set, isOffline, m_folder->path());
        connect(m_view.get(), &ParameterSetView::message, this, [this](const QString& text) { m_messages += text; });
        m_view->show();
        settle();
    }
    void select(const QString& wanted) const
    {
        list()->setCurrentItem(list()->findItems(wanted, Qt::MatchExactly).value(0));
    }
    /// Waits for what has been asked of the store: at most a look and then a change.
    static void settle()
    {
        testsupport::settleFileWork();
        testsupport::settleFileWork();
    }
    void press(const char* name) const
    {
        button(name)->click();
        settle();
    }
    /// Answers the question that is open; its text.
    [[nodiscard]] QString answer(const QString& buttonText) const
    {
        auto* const box = m_view->findChild<QMessageBox*>();
        if (box == nullptr)
            return QStringLiteral("no question");
        const QString question = box->text();
        for (QAbstractButton* const candidate : box->buttons()) {
            if (QString(candidate->text()).remove('&') == buttonText)
                candidate->click();
        }
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return question;
    }

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_common = std::make_unique<GuiComponentCommon>();
        m_component = std::make_unique<SomeComponent>(m_common.get());
        m_messages.clear();
    }

    void cleanup()
    {
        m_view.reset();
        m_component.reset();
        m_common.reset();
        m_folder.reset();
    }

    void withoutSetsTheListSaysWhatToDo()
    {
        open();
        QVERIFY(child<QLabel>("NoParameterSets")->isVisible());
        QVERIFY(!list()->isVisible());
        QVERIFY(!button("LoadParameterSet")->isEnabled());
        QVERIFY(!button("DeleteParameterSet")->isEnabled());
        QVERIFY(!button("RenameParameterSet")->isEnabled());
        QVERIFY(!button("SaveParameterSet")->isEnabled());
    }

    void setsOfTheFolderAreListed()
    {
        QCOMPARE(store().Save("b", kept), QString());
        QCOMPARE(store().Save("a", kept), QString());
        open();
        QCOMPARE(names(), QStringList({"a", "b"}));
        QVERIFY(list()->isVisible());
        QCOMPARE(list()->currentItem()->text(), QStringLiteral("a"));
        QCOMPARE(name()->text(), QStringLiteral("a"));
    }

    void setsThatCameMeanwhileAreListedWhenTheViewIsShownAgain()
    {
        open();
        m_view->hide();
        QCOMPARE(store().Save("later", kept), QString());
        m_view->show();
        settle();
        QCOMPARE(names(), QStringList("later"));
    }

    void loadingHandsTheTextToTheComponent()
    {
        QCOMPARE(store().Save("a", kept), QString());
        open();
        press("LoadParameterSet");
        QCOMPARE(m_component->taken, QStringList(kept));
        QCOMPARE(text().remove('\n'), kept);
        QCOMPARE(m_messages, QStringList("Parameter set \"a\" is loaded."));
    }

    void aSetIsLoadedByKey()
    {
        QCOMPARE(store().Save("a", kept), QString());
        open();
        QTest::keyClick(list(), Qt::Key_Return);
        settle();
        QCOMPARE(m_component->taken, QStringList(kept));
    }

    void aBadFileIsToldAndNothingIsLoaded()
    {
        QCOMPARE(store().Save("good", kept), QString());
        QFile file(m_folder->filePath("bad.xml"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<DF_Settings>");
        file.close();
        open();
        QCOMPARE(names(), QStringList({"bad", "good"}));
        select("bad");
        press("LoadParameterSet");
        QVERIFY(m_component->taken.isEmpty());
        QCOMPARE(m_messages.size(), 1);
        QVERIFY2(m_messages[0].startsWith(m_folder->filePath("bad.xml: it is no XML")), qPrintable(m_messages[0]));
        select("good");
        press("LoadParameterSet");
        QCOMPARE(m_component->taken, QStringList(kept));
    }

    void aComponentWithoutTheSetIsTold()
    {
        QCOMPARE(store().Save("a", kept), QString());
        m_component.reset();
        open();
        press("LoadParameterSet");
        QCOMPARE(m_messages, QStringList("The component has no parameter set \"DF_Settings\" to load into."));
    }

    void whatTheComponentReportsIsSaved()
    {
        open();
        m_component->report(reported);
        QTest::keyClicks(name(), "Night");
        press("SaveParameterSet");
        QCOMPARE(store().Load("Night").xml, std::optional(reported));
        QCOMPARE(names(), QStringList("Night"));
        QCOMPARE(m_messages, QStringList("Parameter set \"Night\" is saved."));
    }

    void returnInTheNameSaves()
    {
        open();
        m_component->report(reported);
        QTest::keyClicks(name(), "Night");
        QTest::keyClick(name(), Qt::Key_Return);
        settle();
        QVERIFY(store().Contains("Night"));
    }

    void nothingReportedIsNotSaved()
    {
        open();
        QTest::keyClicks(name(), "Night");
        press("SaveParameterSet");
        QVERIFY(!store().Contains("Night"));
        QCOMPARE(m_messages, QStringList("The component has not reported any settings that could be saved."));
    }

    void aBadNameIsTold()
    {
        open();
        m_component->report(reported);
        QTest::keyClicks(name(), "a/b");
        press("SaveParameterSet");
        QCOMPARE(m_messages, QStringList("The name of a parameter set contains no slash, backslash or control "
                                         "character."));
        QVERIFY(names().isEmpty());
    }

    void replacingASetIsAsked()
    {
        QCOMPARE(store().Save("a", kept), QString());
        open();
        m_component->report(reported);
        press("SaveParameterSet");
        QCOMPARE(answer("Cancel"), QStringLiteral("There is a parameter set \"a\" already. Replace it?"));
        QCOMPARE(store().Load("a").xml, std::optional(kept));
        press("SaveParameterSet");
        QCOMPARE(answer("Replace"), QStringLiteral("There is a parameter set \"a\" already. Replace it?"));
        QCOMPARE(store().Load("a").xml, std::optional(reported));
    }

    void aQuestionTakesNoNameForMarkup()
    {
        QCOMPARE(store().Save("<b>a", kept), QString());
        open();
        press("DeleteParameterSet");
        QCOMPARE(m_view->findChild<QMessageBox*>()->textFormat(), Qt::PlainText);
        QCOMPARE(answer("Cancel"), QStringLiteral("Delete the parameter set \"<b>a\"?"));
    }

    void renamingTakesTheNameInTheField()
    {
        QCOMPARE(store().Save("a", kept), QString());
        open();
        QVERIFY(!button("RenameParameterSet")->isEnabled()); // the same name
        name()->setText("b");
        QVERIFY(button("RenameParameterSet")->isEnabled());
        press("RenameParameterSet");
        QCOMPARE(names(), QStringList("b"));
        QCOMPARE(m_messages, QStringList("The parameter set is called \"b\" now."));
    }

    void renamingOverAnotherSetIsRefused()
    {
        QCOMPARE(store().Save("a", kept), QString());
        QCOMPARE(store().Save("b", reported), QString());
        open();
        select("a");
        name()->setText("b");
        press("RenameParameterSet");
        QCOMPARE(names(), QStringList({"a", "b"}));
        QCOMPARE(m_messages, QStringList(m_folder->filePath("b.xml: there is such a parameter set already.")));
    }

    void deletingIsAsked()
    {
        QCOMPARE(store().Save("a", kept), QString());
        open();
        press("DeleteParameterSet");
        QCOMPARE(answer("Cancel"), QStringLiteral("Delete the parameter set \"a\"?"));
        QVERIFY(store().Contains("a"));
        press("DeleteParameterSet");
        QCOMPARE(answer("Delete"), QStringLiteral("Delete the parameter set \"a\"?"));
        QVERIFY(!store().Contains("a"));
        QVERIFY(child<QLabel>("NoParameterSets")->isVisible());
        QCOMPARE(m_messages, QStringList("Parameter set \"a\" is deleted."));
    }

    void theReportedTextIsShown()
    {
        open();
        QCOMPARE(text(), QStringLiteral("The component has not reported any settings."));
        m_component->report(reported);
        QCOMPARE(text().remove('\n'), reported);
    }

    void reportsOfOtherSetsAreNotShown()
    {
        open();
        GuiComponentTools others(m_common.get(), QStringLiteral("/GUI/OtherComponent/"));
        others.UpdateParameterSet(set, "<other/>");
        QCOMPARE(text(), QStringLiteral("The component has not reported any settings."));
    }

    void editsAreMarkedUntilTheyAreReported()
    {
        open(true);
        const QString clean = state();
        emit m_common->si_parametersModified();
        QVERIFY(state() != clean);
        QVERIFY(state().startsWith("Edited"));
        press("RequestParameterSet");
        QCOMPARE(state(), clean);
        QCOMPARE(text().remove('\n'), reported);
    }

    void loadingEndsTheMark()
    {
        QCOMPARE(store().Save("a", kept), QString());
        open(true);
        const QString clean = state();
        emit m_common->si_parametersModified();
        press("LoadParameterSet");
        QCOMPARE(state(), clean);
    }

    void savingOfflineAsksForEditsFirst()
    {
        open(true);
        m_component->report(kept);
        emit m_common->si_parametersModified();
        QTest::keyClicks(name(), "a");
        press("SaveParameterSet");
        QCOMPARE(store().Load("a").xml, std::optional(reported));
    }

    void onlineThereIsNothingToRequest()
    {
        open(false);
        QVERIFY(!button("RequestParameterSet")->isVisible());
    }

    void theHostMayGoBeforeTheView()
    {
        QCOMPARE(store().Save("a", kept), QString());
        open(true);
        m_component.reset();
        m_common.reset();
        QVERIFY(!button("LoadParameterSet")->isEnabled());
        QVERIFY(!button("SaveParameterSet")->isEnabled());
        QVERIFY(!button("RequestParameterSet")->isEnabled());
        QVERIFY(button("DeleteParameterSet")->isEnabled());
    }

    void theViewMayGoWhileItAsks()
    {
        QCOMPARE(store().Save("a", kept), QString());
        open();
        press("DeleteParameterSet");
        m_view.reset();
        QVERIFY(store().Contains("a"));
    }

    void aNameThatIsTypedStaysWhenTheListComes()
    {
        QCOMPARE(store().Save("a", kept), QString());
        open();
        QCOMPARE(name()->text(), QString("a"));
        m_view->hide();
        QCOMPARE(store().Save("b", kept), QString());
        m_view->show();
        name()->setText("Night");
        settle();
        QCOMPARE(names(), QStringList({"a", "b"}));
        QCOMPARE(name()->text(), QString("Night"));
        QCOMPARE(list()->currentItem()->text(), QString("a"));
    }

    void whileTheDiskIsBusyNothingWaitsAndNothingIsDoneTwice()
    {
        open();
        m_component->report(reported);
        name()->setText("Night");
        BusyDisk disk;
        button("SaveParameterSet")->click();
        QVERIFY(m_messages.isEmpty());
        button("SaveParameterSet")->click();
        QCOMPARE(m_messages, QStringList("The last request for a parameter set is still being worked on."));
        disk.release();
        settle();
        QCOMPARE(m_messages.mid(1), QStringList("Parameter set \"Night\" is saved."));
        QCOMPARE(names(), QStringList("Night"));
        press("SaveParameterSet");
        QCOMPARE(answer("Cancel"), QString("There is a parameter set \"Night\" already. Replace it?"));
    }

    void aViewThatGoesWhileASetIsSavedLosesNothing()
    {
        QCOMPARE(store().Save("a", kept), QString());
        open();
        m_component->report(reported);
        press("SaveParameterSet");
        BusyDisk disk;
        for (QAbstractButton* const each : m_view->findChild<QMessageBox*>()->buttons()) {
            if (QString(each->text()).remove('&') == "Replace")
                each->click();
        }
        m_view.reset(); // waits for nothing
        QCOMPARE(store().Load("a").xml, std::optional(kept));
        disk.release();
        settle();
        QCOMPARE(store().Load("a").xml, std::optional(reported));
    }

    void theHostMayGoWhileASetIsRead()
    {
        QCOMPARE(store().Save("a", kept), QString());
        open();
        button("LoadParameterSet")->click();
        m_component.reset();
        m_common.reset();
        settle();
        QCOMPARE(m_messages, QStringList("The component has no parameter set \"DF_Settings\" to load into."));
    }

    void everyButtonAndFieldHasAKey()
    {
        open(true);
        QStringList keys;
        for (const QPushButton* const each : m_view->findChildren<QPushButton*>()) {
            QVERIFY2(each->text().contains('&'), qPrintable(each->text()));
            keys += each->text().mid(each->text().indexOf('&') + 1, 1).toLower();
        }
        keys += "m"; // of the name
        QCOMPARE(keys.size(), 6);
        QCOMPARE(keys.removeDuplicates(), 0);
    }
};

DFL_TEST_MAIN(TestParameterSetView)
#include "tst_parametersetview.moc"
