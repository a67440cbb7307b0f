#include "operations.h"

#include "knownvalues.h"
#include "ownclock.h"

#include "devicecontrol/guicentral.h"
#include "guicomponentbase/iguicomponent.h"
#include "valuewidgets/undorecordingcontrolbase.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QScopedValueRollback>
#include <QTableWidget>
#include <QUndoStack>
#include <QtTest>

#include <algorithm>
#include <limits>

namespace chaos {

namespace {

using values::BoolValue;
using values::DoubleValue;
using values::IntValue;
using values::StringValue;
using values::ValueBase;
using values::ValueSelection;

constexpr std::size_t meddlerCount = 4;
constexpr std::size_t latestCount = 40;
constexpr int deepestNotification = 2;
constexpr int deepestBox = 2;

/// Counts how deep an operation is nested in something, for its life.
class Depth
{
public:
    explicit Depth(int& depth)
        : m_depth(depth)
    {
        ++m_depth;
    }
    ~Depth() { --m_depth; }
    Depth(const Depth&) = delete;
    Depth& operator=(const Depth&) = delete;

private:
    int& m_depth;
};

QString settingsText(Dice& dice)
{
    static const char* const texts[] = {
        "<DF_Settings><Bandwidth>12000</Bandwidth><Averaging>500</Averaging><DFMode>Gate</DFMode><FrequencyOffset>0"
        "</FrequencyOffset><Workflow>Continuous</Workflow><LocateType>Online</LocateType><Activity>DF</Activity>"
        "<ActivityTrigger>Manual</ActivityTrigger></DF_Settings>",
        "<DF_Settings><Bandwidth>200000</Bandwidth><Averaging>0</Averaging><DFMode>Norm</DFMode><Detail>"
        "<QualityThreshold>55</QualityThreshold><LevelThreshold>-12.7</LevelThreshold></Detail><FrequencyOffset>-1.5"
        "</FrequencyOffset><Workflow>On request</Workflow><LocateType>History</LocateType><Activity>No DF/Locate"
        "</Activity><ActivityTrigger>Signal</ActivityTrigger></DF_Settings>",
        "<DF_Settings><Detail/></DF_Settings>",
        "<DF_Settings><Bandwidth>nan</Bandwidth><LevelThreshold>.<LevelThreshold></DF_Settings>",
        "<DF_Settings",
        "<Other/>",
        "",
    };
    return dice.oneIn(8) ? anyText(dice) : QString::fromLatin1(dice.pick(texts));
}

QString formText(Dice& dice)
{
    static const QString shipped = [] {
        QFile file(QStringLiteral(FORM_FOLDER "/DF_Settings_FFP.xml"));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }();
    switch (dice.below(4)) {
    case 0:
        return shipped;
    case 1:
        return shipped.left(dice.below(shipped.size()));
    case 2:
        return anyText(dice);
    default:
        return {};
    }
}

QString statusOf(Dice& dice)
{
    if (dice.oneIn(8))
        return {};
    if (dice.oneIn(8))
        return anyText(dice);
    static const char* const heads[] = {"N_", "ST", "LO", "LA", "FB", "FE", "DFID", "", "XX"};
    static const char* const numbers[] = {"1",        "0",          "17",  "49", "-1",
                                          "20000000", "3000000000", "nan", "x",  "99999999999"};
    QString text;
    const int tokens = dice.below(24);
    for (int i = 0; i < tokens; ++i) {
        const QString head = QString::fromLatin1(dice.pick(heads));
        const QString content = head == QLatin1String("N_") ? anyText(dice) : QString::fromLatin1(dice.pick(numbers));
        text += (i == 0 ? QLatin1String("DFID3#") : QLatin1String("#")) + head + content;
    }
    return text;
}

double anyNumber(Dice& dice)
{
    static const double numbers[] = {0.0,
                                     1.0,
                                     -1.0,
                                     50.0,
                                     99.5,
                                     200.0,
                                     -40.0,
                                     155.5e6,
                                     1e300,
                                     -1e300,
                                     std::numeric_limits<double>::quiet_NaN(),
                                     std::numeric_limits<double>::infinity(),
                                     12000.0,
                                     9000.0,
                                     190.0,
                                     370.0};
    return dice.pick(numbers);
}

int anyKey(Dice& dice)
{
    return dice.between(-1, 20);
}

/// What of the operations' own making a value of the handler may hold.
bool isStatus(const QString& path)
{
    return path.contains(QLatin1String("Status"));
}

} // namespace

void Meddler::attachTo(ValueBase* value, bool first)
{
    m_value.Assign(value);
    if (value != nullptr && first)
        value->MakeFirstObserver(this);
}

void Meddler::Update(Observable* /*source*/, TChangeCode /*code*/)
{
    m_operations.meddle();
}

// Weights are shares of the whole; an operation that takes its time has a small one.
const Operations::Entry Operations::entries[] = {
    {"write a value", 700, Place::InNotification, false, &Operations::writeOrdinary},
    {"write a setting", 60, Place::InNotification, false, &Operations::writeSetting},
    {"announce a value", 150, Place::InNotification, false, &Operations::announce},
    {"change a state", 100, Place::InNotification, false, &Operations::changeState},
    {"change limits", 60, Place::InNotification, false, &Operations::changeLimits},
    {"change a list", 150, Place::InNotification, false, &Operations::changeList},
    {"transaction", 60, Place::InNotification, false, &Operations::transaction},
    {"remove or restore a value", 60, Place::InNotification, false, &Operations::removeOrRestore},
    {"change a kind", 12, Place::InNotification, false, &Operations::changeKind},
    {"status text", 100, Place::InNotification, false, &Operations::statusText},
    {"driver answers", 80, Place::InNotification, false, &Operations::answer},
    {"driver fails", 8, Place::InNotification, false, &Operations::failMeasurement},
    {"command", 60, Place::InNotification, false, &Operations::command},
    {"choose a device", 4, Place::InNotification, false, &Operations::chooseDevice},
    {"trigger", 60, Place::InNotification, false, &Operations::trigger},
    {"type", 120, Place::InBox, false, &Operations::type},
    {"click", 30, Place::InBox, false, &Operations::click},
    {"wheel", 20, Place::InBox, false, &Operations::wheel},
    {"move the focus", 20, Place::InBox, false, &Operations::moveFocus},
    {"press the start button", 40, Place::InBox, false, &Operations::pressStart},
    {"press the lamp", 3, Place::InBox, false, &Operations::pressLamp},
    {"open the details", 4, Place::InBox, false, &Operations::openDetails},
    {"close the details", 4, Place::InBox, false, &Operations::closeDetails},
    {"hot key", 10, Place::InBox, false, &Operations::hotKey},
    {"undo or redo", 30, Place::Top, false, &Operations::undoOrRedo}, // a box keeps the menu of the window away
    {"hand in a parameter set", 8, Place::InNotification, false, &Operations::parameterSet},
    {"request the parameters", 4, Place::InNotification, false, &Operations::requestParameters},
    {"change the properties", 4, Place::InNotification, false, &Operations::changeProperties},
    {"input mode", 10, Place::InNotification, false, &Operations::inputMode},
    {"change the font", 1, Place::InBox, false, &Operations::changeFont},
    {"change the language", 1, Place::InBox, false, &Operations::changeLanguage},
    {"change the direction", 1, Place::InBox, false, &Operations::changeDirection},
    {"show or hide the window", 4, Place::InBox, false, &Operations::showOrHide},
    {"pass time", 60, Place::InBox, false, &Operations::passTime},
    {"move a meddler", 60, Place::InBox, false, &Operations::moveMeddler},
    {"end the toolbar", 1, Place::InNotification, true, &Operations::endToolBar},
    {"end the panel", 1, Place::InNotification, true, &Operations::endPanel},
    {"end the window", 1, Place::InBox, true, &Operations::endWindow},
    {"end the driver", 1, Place::InNotification, false, &Operations::endDriver},
    {"make what is missing", 3, Place::InBox, true, &Operations::makeAll},
    {"make the widgets anew", 2, Place::InBox, true, &Operations::makeWidgetsAnew},
    {"make the driver anew", 2, Place::InBox, false, &Operations::makeDriverAnew},
    {"make the component anew", 1, Place::Top, true, &Operations::makeComponentAnew},
    {"connect anew", 2, Place::InBox, false, &Operations::connectAnew},
    {"go offline", 1, Place::InBox, false, &Operations::goOffline},
};

Operations::Operations(World& world, Dice& dice)
    : m_world(world)
    , m_dice(dice)
{
    makeMeddlers();
    qApp->installEventFilter(this);
}

Operations::~Operations() = default;

void Operations::makeMeddlers()
{
    while (m_meddlers.size() < meddlerCount)
        m_meddlers.push_back(std::make_unique<Meddler>(*this));
}

void Operations::performAny()
{
    static const int total = [] {
        int sum = 0;
        for (const Entry& entry : entries)
            sum += entry.weight;
        return sum;
    }();
    for (;;) {
        int place = m_dice.below(total);
        const Entry* entry = entries;
        while (place >= entry->weight)
            place -= (entry++)->weight;
        if (isPossible(*entry)) {
            perform(*entry);
            return;
        }
    }
}

bool Operations::isPossible(const Entry& entry) const
{
    if (m_notificationDepth > 0 && entry.deepest != Place::InNotification)
        return false;
    if (m_boxDepth > 0 && entry.deepest == Place::Top)
        return false;
    if (m_componentCallDepth > 0 && entry.deepest != Place::InNotification && entry.endsWidgets)
        return false;
    return !entry.endsWidgets || m_widgetEventDepth == 0;
}

void Operations::perform(const Entry& entry)
{
    const char* const outer = m_current;
    ++m_count;
    m_current = entry.name;
    m_latest.push_back(QStringLiteral("%1%2 %3")
                           .arg(QString(2 * (m_boxDepth + m_notificationDepth), QLatin1Char(' ')))
                           .arg(m_count)
                           .arg(QLatin1String(entry.name)));
    if (m_latest.size() > latestCount)
        m_latest.pop_front();
    (this->*entry.run)();
    m_current = outer;
}

void Operations::meddle()
{
    if (m_isQuiet || m_notificationDepth >= deepestNotification || !m_dice.oneIn(4))
        return;
    const Depth depth(m_notificationDepth);
    performAny();
}

bool Operations::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show && watched->isWidgetType()) {
        auto* const widget = static_cast<QWidget*>(watched);
        if (widget->isWindow() && widget->isModal()) {
            const QPointer<QWidget> box(widget);
            QMetaObject::invokeMethod(
                this,
                [this, box] {
                    if (box)
                        closeBox(box);
                },
                Qt::QueuedConnection);
        }
    }
    return QObject::eventFilter(watched, event);
}

void Operations::closeBox(QWidget* widget)
{
    ++m_boxesSeen;
    const QPointer<QWidget> box(widget);
    {
        // The box runs an event loop of its own: nothing is being told any more.
        const QScopedValueRollback<int> notifications(m_notificationDepth, 0);
        const Depth depth(m_boxDepth);
        const int operations = m_isQuiet || m_boxDepth > deepestBox ? 0 : m_dice.below(4);
        for (int i = 0; i < operations; ++i)
            performAny();
    }
    if (!box)
        return;
    if (auto* const dialog = qobject_cast<QDialog*>(box.data()))
        dialog->reject();
    else
        box->close();
}

// Values

const KnownValue& Operations::anyKnown(bool setting)
{
    for (;;) {
        const KnownValue& known = m_dice.pick(knownValues());
        if (known.isSetting == setting)
            return known;
    }
}

IObserver* Operations::anyOriginator()
{
    return m_dice.oneIn(4) && !m_meddlers.empty() ? m_dice.pick(m_meddlers).get() : nullptr;
}

void Operations::writeTo(ValueBase& value)
{
    IObserver* const originator = anyOriginator();
    if (auto* const truth = dynamic_cast<BoolValue*>(&value)) {
        truth->SetValue(m_dice.oneIn(2), originator);
    } else if (auto* const integer = dynamic_cast<IntValue*>(&value)) {
        integer->SetValue(m_dice.oneIn(8) ? std::numeric_limits<int>::min() : m_dice.between(-45, 205), originator);
    } else if (auto* const real = dynamic_cast<DoubleValue*>(&value)) {
        real->SetValue(anyNumber(m_dice), originator);
    } else if (auto* const text = dynamic_cast<StringValue*>(&value)) {
        const QString path = text->GetPathName();
        if (isStatus(path))
            text->SetValue(statusOf(m_dice), originator);
        else if (path.endsWith(QLatin1String("PGXML")))
            text->SetValue(formText(m_dice), originator);
        else if (path.contains(QLatin1String("Parameters")))
            text->SetValue(settingsText(m_dice), originator);
        else
            text->SetValue(anyText(m_dice), originator);
    } else if (auto* const selection = dynamic_cast<ValueSelection*>(&value)) {
        switch (m_dice.below(5)) {
        case 0:
            selection->Select(anyText(m_dice), originator);
            break;
        case 1:
            selection->SelectClosestValue(anyNumber(m_dice), originator);
            break;
        case 2:
            selection->Select(anyKey(m_dice), originator);
            break;
        default:
            selection->SelectIndex(m_dice.below(std::max(1, selection->GetItemCount())), originator);
        }
    }
}

void Operations::writeOrdinary()
{
    if (ValueBase* const value = values::Tree::Instance()->FindValue(anyKnown(false).path))
        writeTo(*value);
}

void Operations::writeSetting()
{
    if (ValueBase* const value = values::Tree::Instance()->FindValue(anyKnown(true).path))
        writeTo(*value);
}

void Operations::announce()
{
    static const TChangeCode codes[] = {ChangeState, ChangeContent, ChangeLimits, ChangeItems, ChangeExternal};
    if (ValueBase* const value = values::Tree::Instance()->FindValue(anyKnown(m_dice.oneIn(10)).path))
        value->HasChanged(m_dice.pick(codes), anyOriginator());
}

void Operations::changeState()
{
    if (ValueBase* const value = values::Tree::Instance()->FindValue(anyKnown(m_dice.oneIn(6)).path))
        value->SetState(m_dice.oneIn(2) ? values::StateOrdinary : values::StateUnused, anyOriginator());
}

void Operations::changeLimits()
{
    ValueBase* const value = values::Tree::Instance()->FindValue(anyKnown(m_dice.oneIn(3)).path);
    if (auto* const integer = dynamic_cast<IntValue*>(value))
        integer->SetMinMax(m_dice.between(-50, 50), m_dice.between(0, 200), m_dice.below(3), anyOriginator());
    else if (auto* const real = dynamic_cast<DoubleValue*>(value))
        real->SetMinMax(-1e9, m_dice.oneIn(2) ? 1e9 : anyNumber(m_dice), 1.0, anyOriginator());
}

void Operations::changeItems(ValueSelection& selection)
{
    IObserver* const originator = anyOriginator();
    switch (m_dice.below(8)) {
    case 0:
        selection.DeleteItem(anyKey(m_dice), originator);
        break;
    case 1:
        selection.DeleteItems(originator);
        break;
    case 2:
        selection.AddItems({anyText(m_dice), QStringLiteral("Online"), QStringLiteral("Continuous")}, originator);
        break;
    case 3:
        if (const auto* const other = find<ValueSelection>(anyKnown(m_dice.oneIn(2)).path); other != &selection)
            if (other != nullptr)
                selection.AddItemsFrom(*other, originator);
        break;
    default:
        selection.AddItem(anyText(m_dice), anyNumber(m_dice), anyKey(m_dice), originator);
    }
}

void Operations::changeList()
{
    if (auto* const selection = find<ValueSelection>(anyKnown(m_dice.oneIn(15)).path))
        changeItems(*selection);
}

void Operations::transaction()
{
    ValueBase* const value = values::Tree::Instance()->FindValue(anyKnown(m_dice.oneIn(10)).path);
    if (value == nullptr)
        return;
    auto* const selection = dynamic_cast<ValueSelection*>(value);
    // The codes tell everything that has changed: a widget knows no more than it is told.
    const values::ValueTransaction whole = value->CreateTransaction(
        selection != nullptr ? std::vector{ChangeItems, ChangeContent} : std::vector{ChangeContent, ChangeExternal},
        nullptr);
    for (int i = m_dice.below(4); i > 0; --i) {
        writeTo(*value);
        if (selection != nullptr)
            changeItems(*selection);
    }
}

void Operations::fillWith(ValueBase& value)
{
    if (auto* const selection = dynamic_cast<ValueSelection*>(&value)) {
        const int items = m_dice.below(6);
        for (int key = 0; key < items; ++key)
            selection->AddItem(anyText(m_dice), 1000.0 * key, key);
    } else if (auto* const integer = dynamic_cast<IntValue*>(&value)) {
        integer->SetMinMax(-40, 200, 1, nullptr);
    }
    writeTo(value);
}

void Operations::removeOrRestore()
{
    const KnownValue& known = anyKnown(m_dice.oneIn(4));
    ValueBase* const value = values::Tree::Instance()->FindValue(known.path);
    if (value == nullptr) {
        std::unique_ptr<ValueBase> made = makeValue(known.type);
        fillWith(*made);
        insertValue(known.path, std::move(made));
    } else if (m_dice.oneIn(4)) {
        if (m_dice.oneIn(4))
            value->SetState(values::StateRemoved, nullptr); // whoever holds it lets go of it already now
        values::Tree::Instance()->DeleteValue(known.path);
    }
}

void Operations::changeKind()
{
    const KnownValue& known = anyKnown(m_dice.oneIn(4));
    if (m_componentCallDepth > 0 && known.isMadeByComponent)
        return; // what it makes just now would go astray
    values::Tree::Instance()->DeleteValue(known.path);
    std::unique_ptr<ValueBase> made = makeValue(static_cast<values::TValueType>(m_dice.below(5)));
    fillWith(*made);
    insertValue(known.path, std::move(made));
}

void Operations::statusText()
{
    auto* const value = find<StringValue>(m_dice.oneIn(2) ? handlerPath("Values/Status/LocateStatus")
                                                          : QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus"));
    if (value != nullptr)
        value->SetValue(statusOf(m_dice), anyOriginator());
}

// The driver

void Operations::answer()
{
    ScriptedSource* const source = m_world.source();
    if (source == nullptr)
        return;
    if (m_dice.oneIn(20))
        source->setStations(anyStations(m_dice));
    source->answer(anyResult(m_dice));
}

void Operations::failMeasurement()
{
    if (ScriptedSource* const source = m_world.source())
        source->fail(anyText(m_dice));
}

void Operations::command()
{
    static const int keys[] = {9, 9, 10, 11, 0, 5};
    if (auto* const commands = find<ValueSelection>(handlerPath("Values/Commands")))
        commands->Select(m_dice.pick(keys), anyOriginator());
}

void Operations::chooseDevice()
{
    if (m_world.driver)
        m_world.driver->selectDevice(m_dice.below(2));
}

void Operations::trigger()
{
    if (auto* const value = find<BoolValue>(componentPath() + QLatin1String("TriggerLocateStart")))
        value->SetValue(m_dice.oneIn(2), anyOriginator());
}

// The operator

/// Something in the component's widgets that takes keys and clicks; null when there is nothing now.
QWidget* Operations::anyInput()
{
    QWidget* const place = m_dice.oneIn(2) ? static_cast<QWidget*>(m_world.toolBar) : m_world.panel.data();
    if (place == nullptr)
        return nullptr;
    QList<QWidget*> inputs;
    const QList<QWidget*> all = place->findChildren<QWidget*>();
    for (QWidget* const widget : all) {
        const bool isInput = qobject_cast<QAbstractSpinBox*>(widget) != nullptr ||
                             qobject_cast<QComboBox*>(widget) != nullptr ||
                             qobject_cast<QAbstractButton*>(widget) != nullptr;
        if (isInput && widget->isEnabled() && widget->isVisible())
            inputs += widget;
    }
    return inputs.isEmpty() ? nullptr : m_dice.pick(inputs);
}

void Operations::type()
{
    static const int keys[] = {Qt::Key_1,      Qt::Key_5,     Qt::Key_0,         Qt::Key_Minus, Qt::Key_Period,
                               Qt::Key_Return, Qt::Key_Enter, Qt::Key_Up,        Qt::Key_Down,  Qt::Key_PageUp,
                               Qt::Key_Escape, Qt::Key_Tab,   Qt::Key_Backspace, Qt::Key_Home,  Qt::Key_End,
                               Qt::Key_Space,  Qt::Key_F4,    Qt::Key_N,         Qt::Key_A,     Qt::Key_Delete};
    QPointer<QWidget> target = QApplication::activePopupWidget();
    if (!target)
        target = anyInput();
    if (!target)
        return;
    const Depth depth(m_widgetEventDepth);
    for (int i = m_dice.below(4); i >= 0 && target; --i) {
        const auto modifiers = m_dice.oneIn(10) ? Qt::ControlModifier : Qt::NoModifier;
        QTest::keyClick(target.data(), static_cast<Qt::Key>(m_dice.pick(keys)), modifiers);
    }
}

void Operations::pressAndRelease(QWidget* widget, Qt::MouseButton button)
{
    const QPointer<QWidget> target(widget);
    const QPoint place(m_dice.below(std::max(1, widget->width())), m_dice.below(std::max(1, widget->height())));
    QTest::mousePress(widget, button, Qt::NoModifier, place);
    if (target)
        QTest::mouseRelease(target.data(), button, Qt::NoModifier, place);
}

void Operations::click()
{
    const Depth depth(m_widgetEventDepth);
    QWidget* target = QApplication::activePopupWidget();
    if (target == nullptr)
        target = anyInput();
    if (target != nullptr)
        pressAndRelease(target, m_dice.oneIn(8) ? Qt::RightButton : Qt::LeftButton);
}

void Operations::wheel()
{
    QWidget* const target = anyInput();
    if (target == nullptr)
        return;
    const Depth depth(m_widgetEventDepth);
    const QPointF place(target->rect().center());
    QWheelEvent event(place, target->mapToGlobal(place.toPoint()), QPoint(), QPoint(0, m_dice.oneIn(2) ? 120 : -120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(target, &event);
}

void Operations::moveFocus()
{
    const Depth depth(m_widgetEventDepth);
    if (m_world.window && m_dice.oneIn(3))
        m_world.window->activateWindow();
    if (QWidget* const target = anyInput())
        target->setFocus(Qt::TabFocusReason);
}

// The toolbar's own buttons may end with the toolbar inside their clicks, as they do when what they open stays open
// until after that.

void Operations::pressStart()
{
    auto* const start =
        m_world.toolBar ? m_world.toolBar->findChild<QAbstractButton*>(QStringLiteral("DFStarter")) : nullptr;
    if (start != nullptr)
        pressAndRelease(start, Qt::LeftButton);
}

void Operations::pressLamp()
{
    auto* const lamp = m_world.toolBar ? m_world.toolBar->findChild<QWidget*>(QStringLiteral("Led Label")) : nullptr;
    if (lamp != nullptr)
        pressAndRelease(lamp, m_dice.oneIn(2) ? Qt::LeftButton : Qt::RightButton);
}

void Operations::openDetails()
{
    auto* const button =
        m_world.toolBar ? m_world.toolBar->findChild<QAbstractButton*>(QStringLiteral("DetailedResults")) : nullptr;
    if (button != nullptr)
        pressAndRelease(button, Qt::LeftButton);
}

void Operations::closeDetails()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* const window : windows) {
        if (window->objectName() != QLatin1String("DetailedResults"))
            continue;
        if (auto* const table = window->findChild<QTableWidget*>(); table != nullptr && m_dice.oneIn(2)) {
            table->selectAll();
            QTest::keyClick(table, Qt::Key_C, Qt::ControlModifier);
        } else {
            window->close();
        }
        return;
    }
}

void Operations::hotKey()
{
    if (m_world.window)
        QTest::keyClick(m_world.window.get(), Qt::Key_D, Qt::ControlModifier);
}

void Operations::undoOrRedo()
{
    QUndoStack* const stack = UndoRecordingControlBase::GetUndoStack();
    if (stack == nullptr)
        return;
    if (m_dice.oneIn(2))
        stack->undo();
    else
        stack->redo();
}

// The host

void Operations::parameterSet()
{
    if (m_world.common)
        m_world.common->SetParameterSet(componentPath(), QStringLiteral("DF_Settings"), settingsText(m_dice));
}

void Operations::requestParameters()
{
    if (m_world.common)
        emit m_world.common->si_parametersRequested();
}

void Operations::changeProperties()
{
    if (m_world.common)
        emit m_world.common->si_propertiesChanged();
}

void Operations::inputMode()
{
    using Mode = workbench::IVelmarGuiUserInputControlService::eUserInputMode;
    if (m_world.inputControl)
        m_world.inputControl->setMode(static_cast<Mode>(m_dice.below(4)));
}

void Operations::changeFont()
{
    QFont font = QApplication::font();
    font.setPixelSize(m_dice.between(6, 24));
    font.setBold(m_dice.oneIn(4));
    QApplication::setFont(font);
}

void Operations::changeLanguage()
{
    m_isLanguageSettling = true;
    m_world.setOtherLanguage(!m_world.hasOtherLanguage());
}

void Operations::changeDirection()
{
    QApplication::setLayoutDirection(m_dice.oneIn(2) ? Qt::LeftToRight : Qt::RightToLeft);
}

void Operations::showOrHide()
{
    if (m_world.window)
        m_world.window->setVisible(m_dice.oneIn(4));
}

void Operations::passTime()
{
    OwnClock::advance(m_dice.between(1, 30));
}

void Operations::moveMeddler()
{
    ValueBase* const value = values::Tree::Instance()->FindValue(anyKnown(m_dice.oneIn(2)).path);
    if (!m_meddlers.empty())
        m_dice.pick(m_meddlers)->attachTo(value, m_dice.oneIn(2));
}

void Operations::endToolBar()
{
    delete m_world.toolBar;
}

void Operations::endPanel()
{
    delete m_world.panel;
}

void Operations::endWindow()
{
    m_world.window.reset();
}

void Operations::endDriver()
{
    m_world.driver.reset();
}

void Operations::makeAll()
{
    const Depth depth(m_componentCallDepth);
    m_world.complete(m_dice);
}

void Operations::makeWidgetsAnew()
{
    const Depth depth(m_componentCallDepth);
    if (!m_world.window)
        m_world.makeWindow(m_dice.oneIn(4));
    m_world.makeWidgets();
    m_world.connectValues();
}

void Operations::makeDriverAnew()
{
    m_world.makeDriver(m_dice);
}

void Operations::makeComponentAnew()
{
    const Depth depth(m_componentCallDepth);
    m_world.makeComponent();
    m_world.makeWidgets();
    m_world.connectValues();
}

void Operations::connectAnew()
{
    const Depth depth(m_componentCallDepth);
    m_world.connectValues();
}

void Operations::goOffline()
{
    const Depth depth(m_componentCallDepth);
    m_world.goOffline();
}

} // namespace chaos
