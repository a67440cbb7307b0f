#include "app/displaytext.h"
#include "app/mainwindow.h"
#include "app/resulthistory.h"
#include "app/session.h"
#include "app/shotreport.h"
#include "app/tracemodel.h"
#include "app/valuetreemodel.h"
#include "app/valuetreeview.h"
#include "drivers/dfsource.h"
#include "map/mapformats.h"
#include "map/mapitems.h"

#include "support/freshtree.h"
#include "support/hostiletexts.h"
#include "support/testmain.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QUndoStack>

#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valueselection.h"
#include "valuewidgets/undorecordingcontrolbase.h"

#include <algorithm>

using namespace workbench;
using testsupport::FreshTree;
using testsupport::HostileText;
using testsupport::hostileTexts;

namespace {

bool obeysNothing(const QString& line)
{
    return std::none_of(line.begin(), line.end(), [](QChar c) {
        return c.category() == QChar::Other_Control || c.unicode() == 0x202E || c.unicode() == 0x200F;
    });
}

/// A network with a name of somebody else's choice.
class NamedSource final : public DfSource
{
public:
    explicit NamedSource(QString name, std::vector<DfDevice> devices = {standardDevice()})
        : m_name(std::move(name))
        , m_devices(std::move(devices))
    {
    }
    [[nodiscard]] QString name() const override { return m_name; }
    [[nodiscard]] std::vector<StationInfo> stations() const override { return {}; }
    [[nodiscard]] std::vector<StationInfo> hriStations() const override { return {}; }
    [[nodiscard]] std::optional<double> initialFrequency() const override { return std::nullopt; }
    [[nodiscard]] std::vector<DfDevice> devices() const override { return m_devices; }
    [[nodiscard]] std::optional<int> measurementsLeft() const override { return std::nullopt; }
    void measure(const DfRequest& /*request*/) override {}
    void cancel() override {}

private:
    QString m_name;
    std::vector<DfDevice> m_devices;
};

} // namespace

class TestHostileTextsWorkbench : public QObject
{
    Q_OBJECT

private slots:
    void aTerminalGetsNothingToObey_data();
    void aTerminalGetsNothingToObey();
    void ordinaryTextsReachATerminalAsTheyAre();
    void controlCharactersAreShownByTheirPictures();
    void halvesOfCharactersAreReplaced();
    void jsonKeepsItsMeaning_data();
    void jsonKeepsItsMeaning();

    void aToolTipShowsMarkupAsItStands_data();
    void aToolTipShowsMarkupAsItStands();
    void aLongTextIsCutBetweenCharacters();

    void theTableOfAShotIsAsHighAsItsStations_data();
    void theTableOfAShotIsAsHighAsItsStations();

    void theValueTreeShowsTheBeginningAndEditsTheWhole();
    void theValueTreeTakesNoNameForMarkup();
    void theValueTreeOffersTheBeginningsOfItems();
    void tracesAreShownShortAndCopiedWhole();
    void traceToolTipsAreNoMarkup();

    void theMapWritesNoLongerNamesThanThereIsRoomFor_data();
    void theMapWritesNoLongerNamesThanThereIsRoomFor();

    void theWindowTakesNoDriverForMarkup();
    void theWindowTakesNoMessageForMarkup();
    void theMenuOfDevicesHasShortLines();
    void theHistoryTakesNoFileForMarkup();
    void theWindowKeepsABoundedNumberOfEdits();
    void anAmpersandOfAnEditIsNoMnemonic();

private:
    static void addHostileTexts();
};

void TestHostileTextsWorkbench::addHostileTexts()
{
    QTest::addColumn<QString>("text");
    for (const HostileText& hostile : hostileTexts())
        QTest::newRow(hostile.name) << hostile.text;
    QTest::newRow("huge") << testsupport::hugeText();
}

void TestHostileTextsWorkbench::aTerminalGetsNothingToObey_data()
{
    addHostileTexts();
}

void TestHostileTextsWorkbench::aTerminalGetsNothingToObey()
{
    QFETCH(QString, text);
    const QString line = forTerminal(text);
    QVERIFY(obeysNothing(line));
    QVERIFY(line.size() <= 501);
    QCOMPARE(QString::fromUtf8(line.toUtf8()), line); // whole characters only
    QVERIFY(!line.isEmpty());
}

void TestHostileTextsWorkbench::ordinaryTextsReachATerminalAsTheyAre()
{
    const QString text = QStringLiteral("Åby 12.5° — dBµV, 北, ") + QString::fromUcs4(U"\U0001F4E1");
    QCOMPARE(forTerminal(text), text);
    QCOMPARE(forTerminal(QString()), QString());
}

void TestHostileTextsWorkbench::controlCharactersAreShownByTheirPictures()
{
    QCOMPARE(forTerminal(QStringLiteral("a\x1b[2J\n\a")), QStringLiteral("a\u241B[2J\u240A\u2407"));
    QCOMPARE(forTerminal(QString(QChar(0)) + QChar(0x7F)), QStringLiteral("\u2400\u2421"));
    QCOMPARE(forTerminal(QString(QChar(0x9B))), QString(QChar(0xFFFD)));
    QCOMPARE(forTerminal(QString(QChar(0x202E)) + QChar(0x2066) + QChar(0x2028)), QString(3, QChar(0xFFFD)));
}

void TestHostileTextsWorkbench::halvesOfCharactersAreReplaced()
{
    const QChar high(0xD83D);
    const QChar low(0xDE00);
    const QChar mark(0xFFFD);
    QCOMPARE(forTerminal(QString(high) + low), QString(high) + low);
    QCOMPARE(forTerminal(QString(low) + high + high + low + high), QString(mark) + mark + high + low + mark);
}

void TestHostileTextsWorkbench::jsonKeepsItsMeaning_data()
{
    addHostileTexts();
}

void TestHostileTextsWorkbench::jsonKeepsItsMeaning()
{
    QFETCH(QString, text);
    const QByteArray json = QJsonDocument(QJsonArray{text, QStringLiteral("\u009B\u202E")}).toJson();
    const QString printed = jsonForTerminal(QString::fromUtf8(json));
    QString withoutLines = printed;
    QVERIFY(obeysNothing(withoutLines.remove(QLatin1Char('\n'))));
    QCOMPARE(QJsonDocument::fromJson(printed.toUtf8()), QJsonDocument::fromJson(json));
    QCOMPARE(QJsonDocument::fromJson(printed.toUtf8()).array().size(), 2);
}

void TestHostileTextsWorkbench::aToolTipShowsMarkupAsItStands_data()
{
    addHostileTexts();
}

void TestHostileTextsWorkbench::aToolTipShowsMarkupAsItStands()
{
    QFETCH(QString, text);
    const QString toolTip = asToolTip(text);
    QTextDocument shown;
    if (Qt::mightBeRichText(toolTip))
        shown.setHtml(toolTip);
    else
        shown.setPlainText(toolTip);
    QTextDocument wanted;
    wanted.setPlainText(beginningOf(text));
    QCOMPARE(shown.toPlainText().simplified(), wanted.toPlainText().simplified());
    QVERIFY(!toolTip.contains(QLatin1String("<img")));
}

void TestHostileTextsWorkbench::aLongTextIsCutBetweenCharacters()
{
    const QString character = QString::fromUcs4(U"\U0001F4E1");
    const QString even = beginningOf(character.repeated(1000));
    const QString odd = beginningOf(QLatin1Char('x') + character.repeated(1000));
    QCOMPARE(even, character.repeated(250) + QChar(0x2026));
    QCOMPARE(odd, QLatin1Char('x') + character.repeated(249) + QChar(0x2026));
    QCOMPARE(beginningOf(QString(500, QLatin1Char('x'))), QString(500, QLatin1Char('x')));
    QCOMPARE(beginningOf(QString(501, QLatin1Char('x'))), QString(500, QLatin1Char('x')) + QChar(0x2026));
}

void TestHostileTextsWorkbench::theTableOfAShotIsAsHighAsItsStations_data()
{
    addHostileTexts();
}

void TestHostileTextsWorkbench::theTableOfAShotIsAsHighAsItsStations()
{
    QFETCH(QString, text);
    const auto linesWith = [](const QString& name) {
        ShotReport shot;
        shot.directionFinder = name;
        shot.averageBearing = name;
        shot.resultTime = name;
        StationReport station;
        station.key = 1;
        station.name = name;
        shot.stations = {station, station};
        return shotTable(1, shot).split(QLatin1Char('\n'));
    };
    const QStringList lines = linesWith(text);
    QCOMPARE(lines.size(), linesWith(QStringLiteral("North")).size());
    for (const QString& line : lines)
        QVERIFY2(obeysNothing(line) && line.size() < 1000, qPrintable(line.left(80)));
}

void TestHostileTextsWorkbench::theValueTreeShowsTheBeginningAndEditsTheWhole()
{
    FreshTree tree;
    const QString text = testsupport::hugeText();
    tree.add<values::StringValue>(QStringLiteral("/Text"))->SetValue(text, nullptr);
    const ValueTreeModel model;
    const QModelIndex index = model.indexOf(QStringLiteral("/Text"), ValueTreeModel::ValueColumn);
    QCOMPARE(index.data().toString(), beginningOf(text));
    QCOMPARE(index.data(Qt::EditRole).toString(), text);
}

void TestHostileTextsWorkbench::theValueTreeTakesNoNameForMarkup()
{
    FreshTree tree;
    const QString path = QStringLiteral("/<img src='x'> <b>A<") + QLatin1Char('/') + QStringLiteral("b>");
    tree.add<values::StringValue>(path);
    const ValueTreeModel model;
    for (const QString& place : {path, path.left(path.lastIndexOf(QLatin1Char('/')))}) {
        const QString toolTip = model.indexOf(place).data(Qt::ToolTipRole).toString();
        QVERIFY(!toolTip.contains(QLatin1String("<img")));
        QVERIFY(toolTip.contains(QLatin1String("&lt;img")));
    }
}

void TestHostileTextsWorkbench::theValueTreeOffersTheBeginningsOfItems()
{
    FreshTree tree;
    auto* const selection = tree.add<values::ValueSelection>(QStringLiteral("/Stations"));
    selection->AddItem(QStringLiteral("North"), 0.0, 1);
    selection->AddItem(testsupport::hugeText(), 0.0, 2);
    ValueTreeModel model;
    const QModelIndex index = model.indexOf(QStringLiteral("/Stations"), ValueTreeModel::ValueColumn);
    const ValueDelegate delegate;
    QWidget parent;
    auto* const items = qobject_cast<QComboBox*>(delegate.createEditor(&parent, {}, index));
    QVERIFY(items != nullptr);
    QCOMPARE(items->itemText(0), QStringLiteral("North"));
    QCOMPARE(items->itemText(1), beginningOf(testsupport::hugeText()));
    items->setCurrentIndex(1);
    delegate.setModelData(items, &model, index);
    QCOMPARE(selection->GetCurrentItem()->GetName(), testsupport::hugeText());
}

void TestHostileTextsWorkbench::tracesAreShownShortAndCopiedWhole()
{
    const QString text = testsupport::hugeText();
    TraceModel model;
    model.append({text, QStringLiteral("source"), 1}, QDateTime::currentDateTime());
    QCOMPARE(model.index(0, TraceModel::TextColumn).data().toString(), beginningOf(text));
    QVERIFY(model.textOf({0}).contains(text));
}

void TestHostileTextsWorkbench::traceToolTipsAreNoMarkup()
{
    TraceModel model;
    model.append({QStringLiteral("Cannot load <img src=\"file:///etc/passwd\">"), QStringLiteral("source"), 1},
                 QDateTime::currentDateTime());
    const QString toolTip = model.index(0, TraceModel::TextColumn).data(Qt::ToolTipRole).toString();
    QVERIFY(toolTip.contains(QLatin1String("&lt;img")));
}

void TestHostileTextsWorkbench::theMapWritesNoLongerNamesThanThereIsRoomFor_data()
{
    addHostileTexts();
}

void TestHostileTextsWorkbench::theMapWritesNoLongerNamesThanThereIsRoomFor()
{
    QFETCH(QString, text);
    StationItem station(1);
    station.setText(stationText(text));
    QVERIFY(station.boundingRect().width() < 1500.0);
    QImage picture(100, 100, QImage::Format_ARGB32);
    QPainter painter(&picture);
    station.paint(&painter, nullptr, nullptr);
}

void TestHostileTextsWorkbench::theWindowTakesNoDriverForMarkup()
{
    FreshTree tree;
    const QString name = QStringLiteral("<b>North</b><link rel=\"stylesheet\" href=\"file:///etc/passwd\">");
    Session session(std::make_unique<NamedSource>(name));
    MainWindow window;
    window.follow(session);
    for (const char* const label : {"DriverName", "LastResult", "InputMode"})
        QCOMPARE(window.findChild<QLabel*>(QLatin1String(label))->textFormat(), Qt::PlainText);
    QCOMPARE(window.findChild<QLabel*>(QStringLiteral("DriverName"))->text(), name);
}

void TestHostileTextsWorkbench::theWindowTakesNoMessageForMarkup()
{
    MainWindow window;
    window.showMessage(QStringLiteral("<img src=\"file:///etc/passwd\"> is refused."));
    QCOMPARE(window.statusBar()->currentMessage(), QStringLiteral("<img src=\"file:///etc/passwd\"> is refused."));
    QVERIFY(window.statusBar()->toolTip().contains(QLatin1String("&lt;img")));
    window.showMessage(testsupport::hugeText());
    QVERIFY(window.statusBar()->currentMessage().size() < 1000);
    QVERIFY(window.statusBar()->toolTip().size() < 1000);
}

void TestHostileTextsWorkbench::theMenuOfDevicesHasShortLines()
{
    FreshTree tree;
    DfDevice first = standardDevice();
    first.name = QStringLiteral("R&S\nfirst");
    DfDevice second = standardDevice();
    second.name = testsupport::hugeText();
    Session session(std::make_unique<NamedSource>(QStringLiteral("Network"), std::vector<DfDevice>{first, second}));
    MainWindow window;
    window.follow(session);
    QStringList texts;
    for (const QAction* const action : window.findChildren<QAction*>()) {
        if (action->isCheckable() &&
            (action->text().startsWith(QLatin1String("&1 ")) || action->text().startsWith(QLatin1String("&2 "))))
            texts += action->text();
    }
    QCOMPARE(texts, (QStringList{QStringLiteral("&1 R&&S first"),
                                 QStringLiteral("&2 ") + QString(59, QLatin1Char('N')) + QChar(0x2026)}));
}

void TestHostileTextsWorkbench::theHistoryTakesNoFileForMarkup()
{
    FreshTree tree;
    const QTemporaryDir folder;
    const QString name = QStringLiteral("<b>");
    QVERIFY(QDir(folder.path()).mkdir(name));
    ResultHistory history(folder.filePath(name)); // a folder is no store
    Session session(std::make_unique<NamedSource>(QStringLiteral("Network")));
    MainWindow window;
    window.follow(session);
    window.offerHistory(history);
    const auto toolTips = [&window, &name] {
        QStringList texts;
        for (const QWidget* const widget : window.findChildren<QWidget*>()) {
            const QString text = widget->toolTip();
            if (text.contains(name) || text.contains(name.toHtmlEscaped()))
                texts += text;
        }
        return texts;
    };
    QCOMPARE(toolTips().size(), 1);
    QVERIFY2(!toolTips()[0].contains(name), qPrintable(toolTips()[0]));
    QTRY_VERIFY(!history.isUsable());
    QVERIFY(toolTips().size() >= 3); // the summary, the view's fields and the message
    for (const QString& text : toolTips())
        QVERIFY2(!text.contains(name), qPrintable(text));
}

void TestHostileTextsWorkbench::theWindowKeepsABoundedNumberOfEdits()
{
    MainWindow window;
    QUndoStack* const stack = UndoRecordingControlBase::GetUndoStack();
    for (int i = 0; i < 1500; ++i)
        stack->push(new QUndoCommand(QString::number(i)));
    QCOMPARE(stack->count(), 1000);
    QCOMPARE(stack->undoText(), QStringLiteral("1499"));
}

void TestHostileTextsWorkbench::anAmpersandOfAnEditIsNoMnemonic()
{
    const MainWindow window;
    const auto* const edit = window.menuBar()->actions().at(1)->menu();
    QAction* const undo = edit->actions().at(0);
    QAction* const redo = edit->actions().at(1);
    QCOMPARE(undo->text(), QStringLiteral("&Undo"));
    QUndoStack* const stack = UndoRecordingControlBase::GetUndoStack();
    stack->push(new QUndoCommand(QStringLiteral("Search & rescue")));
    QCOMPARE(undo->text(), QStringLiteral("&Undo Search && rescue"));
    undo->trigger();
    QCOMPARE(undo->text(), QStringLiteral("&Undo"));
    QVERIFY(!undo->isEnabled());
    QCOMPARE(redo->text(), QStringLiteral("&Redo Search && rescue"));
    redo->trigger();
    QVERIFY(!redo->isEnabled());
    QVERIFY(undo->isEnabled());
}

DFL_TEST_MAIN(TestHostileTextsWorkbench)
#include "tst_hostiletexts_workbench.moc"
