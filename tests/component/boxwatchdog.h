#pragma once

#include <QApplication>
#include <QImage>
#include <QMessageBox>
#include <QTimer>

#include <functional>
#include <utility>
#include <vector>

namespace testsupport {

/// What an operator saw of a message box.
struct SeenBox
{
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons;
    QMessageBox::Icon icon;
    bool hasParent;
    const QObject* parent;
    bool isModal;
    QImage picture; ///< null without one
};

/// Notes and closes every message box while it lives, as soon as the box runs its event loop. May do something first.
class BoxWatchdog : public QObject
{
public:
    explicit BoxWatchdog(std::function<void()> whileOpen = {})
        : m_whileOpen(std::move(whileOpen))
    {
        m_poll.setInterval(1);
        connect(&m_poll, &QTimer::timeout, this, &BoxWatchdog::look);
        m_poll.start();
    }

    std::vector<SeenBox> seen;

private:
    void look()
    {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr)
            return;
        seen.push_back({box->windowTitle(), box->text(), box->standardButtons(), box->icon(), box->parent() != nullptr,
                        box->parent(), box->isModal(), box->iconPixmap().toImage()});
        if (m_whileOpen)
            m_whileOpen();
        box->done(QMessageBox::Ok);
    }

    QTimer m_poll;
    std::function<void()> m_whileOpen;
};

} // namespace testsupport
