#include "app/modalboxcloser.h"

#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QPointer>
#include <QTextDocumentFragment>

namespace workbench {

namespace {

QString textOf(const QWidget* window)
{
    QString title = window->windowTitle();
    const auto* const box = qobject_cast<const QMessageBox*>(window);
    if (box == nullptr)
        return title;
    const QString message = QTextDocumentFragment::fromHtml(box->text()).toPlainText().simplified();
    return title.isEmpty() ? message : title + QLatin1String(": ") + message;
}

} // namespace

ModalBoxCloser::ModalBoxCloser(QObject* parent)
    : QObject(parent)
{
    qApp->installEventFilter(this);
}

bool ModalBoxCloser::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Show && watched->isWidgetType()) {
        const QPointer<QWidget> window(static_cast<QWidget*>(watched));
        if (window->isWindow() && window->isModal()) {
            // From the event loop: the loop in which the box waits has not begun yet.
            QMetaObject::invokeMethod(
                this,
                [this, window] {
                    if (window)
                        close(window);
                },
                Qt::QueuedConnection);
        }
    }
    return QObject::eventFilter(watched, event);
}

void ModalBoxCloser::close(QWidget* window)
{
    const QString text = textOf(window);
    if (auto* const dialog = qobject_cast<QDialog*>(window))
        dialog->reject();
    else
        window->close();
    emit closed(text);
}

} // namespace workbench
