#include <QGuiApplication>
#include <QScreen>

/// Holds the screen of the offscreen platform, which never gives it back, for the leak check: what a variable points to
/// is not lost. Naming the platform as a place of leaks would let everything pass that is lost below one of its calls.
///
/// Volatile, because nobody reads it.
static QScreen* volatile keptScreen = nullptr;

static void keepScreen()
{
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr)
        keptScreen = QGuiApplication::primaryScreen();
}
Q_COREAPP_STARTUP_FUNCTION(keepScreen)
