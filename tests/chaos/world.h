#pragma once

#include "dice.h"
#include "scriptedsource.h"

#include "app/componentlibrary.h"
#include "app/mainwindow.h"
#include "app/userinputcontrol.h"
#include "drivers/dfdriver.h"
#include "guicomponentbase/guicomponentcommon.h"

#include <QPointer>
#include <QToolBar>
#include <QTranslator>

#include <memory>

namespace chaos {

/// Answers every text with one of its own, so that what is translated can be told from what is not.
class OtherLanguage final : public QTranslator
{
public:
    QString translate(const char* context, const char* sourceText, const char* disambiguation, int n) const override;
    bool isEmpty() const override { return false; }
};

/// One host with one component at work: window, driver, component library, widgets. Any part may be missing.
class World
{
public:
    World();
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Makes everything that there is not.
    void complete(Dice& dice);
    /// Ends everything, in any order. Values that nobody owns stay.
    void end(Dice& dice);

    void makeWindow(bool shown);
    void makeDriver(Dice& dice);
    void makeComponent();
    /// Has the component make its widgets, also once more, and puts them into the window.
    void makeWidgets();
    /// Announces the driver's values.
    void connectValues();
    void goOffline();

    void setOtherLanguage(bool on);
    [[nodiscard]] bool hasOtherLanguage() const { return m_hasOtherLanguage; }

    [[nodiscard]] ScriptedSource* source() const;

    std::unique_ptr<VelmarGui::GuiComponentCommon> common;
    std::shared_ptr<workbench::UserInputControl> inputControl;
    std::unique_ptr<workbench::MainWindow> window;
    std::unique_ptr<workbench::DfDriver> driver;
    std::unique_ptr<workbench::LoadedComponent> component;
    QPointer<QToolBar> toolBar;
    QPointer<QWidget> panel;

private:
    void makeCommon();
    void makeRoomForComponent(bool withSettings);

    OtherLanguage m_otherLanguage;
    bool m_hasOtherLanguage = false;
};

[[nodiscard]] workbench::StationInfo anyStation(Dice& dice, int id);
[[nodiscard]] std::vector<workbench::StationInfo> anyStations(Dice& dice);
[[nodiscard]] workbench::DfResult anyResult(Dice& dice);
[[nodiscard]] QString anyText(Dice& dice);

} // namespace chaos
