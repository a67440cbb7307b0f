#pragma once

#include "world.h"

#include "valueframework/valueclasses/valueobservermacros.h"

#include <QObject>

#include <deque>
#include <memory>
#include <vector>

namespace chaos {

struct KnownValue;
class Operations;

/// Observes a value and, when it is told of a change, may do whatever an observer may do.
class Meddler final : public IObserver
{
public:
    explicit Meddler(Operations& operations)
        : m_operations(operations)
    {
    }
    void attachTo(values::ValueBase* value, bool first);
    void Update(Observable* source, TChangeCode code) override;

private:
    Operations& m_operations;
    values::ValueObservingPtr<values::ValueBase> m_value{this};
};

/// Everything that may happen to a component, one thing at a time.
///
/// A modal box that opens is closed from the event loop, after some more operations: nobody who opens one can rely on
/// what was there before.
class Operations : public QObject
{
    Q_OBJECT
public:
    Operations(World& world, Dice& dice);
    ~Operations() override;

    void performAny();
    /// Number of operations so far, nested ones included.
    [[nodiscard]] int count() const { return m_count; }
    /// The latest ones in their order, each with its number.
    [[nodiscard]] const std::deque<QString>& latest() const { return m_latest; }
    /// Name of the one that is under way, or was last; static.
    [[nodiscard]] const char* current() const { return m_current; }
    /// Texts that may still be in the language before, until the event loop has run.
    [[nodiscard]] bool isLanguageSettling() const { return m_isLanguageSettling; }
    void languageHasSettled() { m_isLanguageSettling = false; }
    /// Meddlers keep still.
    void setQuiet(bool quiet) { m_isQuiet = quiet; }
    void makeMeddlers();
    void letMeddlersGo() { m_meddlers.clear(); }

    [[nodiscard]] int boxesSeen() const { return m_boxesSeen; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    friend class Meddler;

    /// Where an operation may happen; each also further up.
    enum class Place
    {
        Top,            ///< between two events only
        InBox,          ///< also while a modal box is open
        InNotification, ///< also while a change is being told
    };
    struct Entry
    {
        const char* name;
        int weight;
        Place deepest;
        bool endsWidgets;
        void (Operations::*run)();
    };
    static const Entry entries[];

    void perform(const Entry& entry);
    [[nodiscard]] bool isPossible(const Entry& entry) const;
    void meddle();
    void closeBox(QWidget* box);

    [[nodiscard]] const KnownValue& anyKnown(bool setting);
    [[nodiscard]] IObserver* anyOriginator();
    void writeTo(values::ValueBase& value);
    void changeItems(values::ValueSelection& selection);
    void fillWith(values::ValueBase& value);

    void writeOrdinary();
    void writeSetting();
    void announce();
    void changeState();
    void changeLimits();
    void changeList();
    void transaction();
    void removeOrRestore();
    void changeKind();
    void statusText();
    void answer();
    void failMeasurement();
    void command();
    void chooseDevice();
    void trigger();
    void type();
    void click();
    void wheel();
    void moveFocus();
    void pressStart();
    void pressLamp();
    void openDetails();
    void closeDetails();
    void hotKey();
    void undoOrRedo();
    void parameterSet();
    void requestParameters();
    void changeProperties();
    void inputMode();
    void changeFont();
    void changeLanguage();
    void changeDirection();
    void showOrHide();
    void passTime();
    void moveMeddler();
    void endToolBar();
    void endPanel();
    void endWindow();
    void endDriver();
    void makeAll();
    void makeWidgetsAnew();
    void makeDriverAnew();
    void makeComponentAnew();
    void connectAnew();
    void goOffline();

    [[nodiscard]] QWidget* anyInput();
    void pressAndRelease(QWidget* widget, Qt::MouseButton button);

    World& m_world;
    Dice& m_dice;
    std::vector<std::unique_ptr<Meddler>> m_meddlers;
    std::deque<QString> m_latest;
    const char* m_current = "";
    int m_count = 0;
    int m_boxesSeen = 0;
    int m_boxDepth = 0;
    int m_notificationDepth = 0;
    int m_widgetEventDepth = 0;   // of widgets that must outlive their events
    int m_componentCallDepth = 0; // the component is being asked for something
    bool m_isLanguageSettling = false;
    bool m_isQuiet = false;
};

} // namespace chaos
