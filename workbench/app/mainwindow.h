#pragma once

#include "guicomponentbase/ivelmarguiservice.h"

#include <QImage>
#include <QMainWindow>
#include <QUndoStack>

class QLabel;
class QMenu;

namespace workbench {

class DfDriver;
class FileWork;
class MapView;
class ResultFeed;
class ResultHistory;
class Session;
class TraceView;
class ValueTreeView;
struct ResultBatch;

/// The window of the workbench: the component's toolbar on top, its panel, the live value tree and the traces around
/// it. It is the host's main widget as long as it lives.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Puts the component's widgets in; they become children of the window. @p panel null: a text says that there is
    /// none.
    void place(QToolBar* toolBar, QWidget* panel);
    /// Follows the driver of @p session and offers its services in the menus. To be called once, before place(). The
    /// session may end before the window.
    void follow(Session& session);
    /// Adds a dock with the parameter set of the component of @p session and the named sets in @p folder. The session
    /// may end before the window.
    void offerParameterSets(Session& session, const QString& folder);
    /// Adds a dock in which the bearings of @p history are chosen, and says in the status bar whether results are
    /// stored. To be called after follow() of a session with a driver. The history and the session may end before the
    /// window.
    void offerHistory(ResultHistory& history);
    /// Shows in place of the component why there is none; @p reason is a full sentence.
    void showComponentFailure(const QString& reason);

    /// What it looks like, with all results that are published.
    [[nodiscard]] QImage picture();

    /// Null without a driver.
    [[nodiscard]] MapView* mapView() const { return m_mapView; }
    [[nodiscard]] TraceView* traceView() const { return m_traceView; }
    [[nodiscard]] ValueTreeView* valueTreeView() const { return m_valueTreeView; }

public slots:
    /// Shows @p text in the status bar until something else is to be said there.
    void showMessage(const QString& text);

signals:
    /// The operator has closed the window. Windows of the component may still be open.
    void closed();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void addDocks();
    void addStatusBar();
    void addToStatusBar(QLabel* label);
    void addFileMenu();
    void addEditMenu();
    void addViewMenu();
    void addHelpMenu();
    void addInputModeMenu(Session& session);
    void addDeviceMenu(DfDriver& driver);
    void addMap(const DfDriver& driver);
    void endMessageOfFailure();
    void addMapEntries();
    void showHistoryState(const ResultHistory& history);
    void findValue();
    void addDockEntry(QDockWidget* dock, const QString& text);
    void addFocusKeys();
    void focusNextArea(bool forward);
    void saveScreenshotAs();
    void showHotKeys();
    void showAbout();
    void showMeasuringFailure(const QString& text);
    void showResults(const ResultBatch& batch);
    [[nodiscard]] QWidget* textPanel(const QString& objectName, const QString& text) const;

    QUndoStack m_undoStack;
    FileWork* m_files;
    ResultFeed* m_feed = nullptr; // null without a driver
    MapView* m_mapView = nullptr;
    QDockWidget* m_panelDock = nullptr;
    TraceView* m_traceView = nullptr;
    ValueTreeView* m_valueTreeView = nullptr;
    QLabel* m_driverName = nullptr;
    QLabel* m_inputMode = nullptr;
    QLabel* m_lastResult = nullptr;
    QLabel* m_historyState = nullptr; // null without a history
    QMenu* m_fileMenu = nullptr;
    QMenu* m_viewMenu = nullptr;
    QMenu* m_helpMenu = nullptr;
    QString m_toolBarObstacle; // why nothing can be done in the toolbar; empty: it can
    int m_resultCount = 0;
    bool m_messageEndsWithResult = false;
    bool m_docksAreSized = false;
};

} // namespace workbench
