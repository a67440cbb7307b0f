#pragma once

#include "app/paintpace.h"

#include <QApplication>

namespace workbench {

/// An application object that lets no exception of a component end the program: one that leaves an event handler is
/// caught and told. Its windows are painted at the pace of PaintPace, those of components too.
class Application : public QApplication
{
    Q_OBJECT
public:
    using QApplication::QApplication;
    bool notify(QObject* receiver, QEvent* event) override;

signals:
    /// @p text is a full sentence.
    void exceptionCaught(const QString& text);

private:
    PaintPace m_paintPace;
};

/// The exit codes of the program.
enum ExitCode : int
{
    Done = 0,
    ComponentFailed = 1, ///< the component could not be loaded or used
    BadOptionsOrFiles = 2,
};

/// The whole program: reads the command line, sets everything up, works, and returns the exit code. Makes the
/// application object itself, because the options decide about the platform.
[[nodiscard]] int runWorkbench(int argc, char** argv);

} // namespace workbench
