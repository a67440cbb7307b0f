#pragma once

#include <QObject>
#include <QTimer>

#include <functional>
#include <map>

class QWidget;

namespace workbench {

/// Lets windows rest between two paints, so that a window whose content changes all the time leaves time for the work
/// behind it. A window that has rested is painted at once; what changes while it rests is painted together afterwards.
class PaintPace final : public QObject
{
    Q_OBJECT
public:
    /// ms from one paint of a window to the next: thirty a second look like a flow.
    static constexpr int frameTime = 33;

    explicit PaintPace(QObject* parent = nullptr, int frame = frameTime);

    /// Delivers an UpdateRequest for @p window by calling @p deliver, now or, if the window rests, not at all: another
    /// UpdateRequest is posted when it has rested. @p deliver may delete the window.
    void paint(QWidget& window, const std::function<void()>& deliver);

private:
    struct Rest
    {
        QTimer timer; // runs while the window rests
        bool isPaintDue = false;
    };

    Rest& restOf(QWidget& window);

    int m_frame;
    std::map<const QObject*, Rest> m_rests;
};

} // namespace workbench
