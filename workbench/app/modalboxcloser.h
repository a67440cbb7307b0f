#pragma once

#include <QObject>

namespace workbench {

/// Closes every modal window that is opened while this object lives, as the Escape key does: for work without an
/// operator, whom a box would wait for. What a box says is not lost but reported.
class ModalBoxCloser : public QObject
{
    Q_OBJECT
public:
    explicit ModalBoxCloser(QObject* parent = nullptr);

signals:
    /// @p text is plain text: title and message of the box.
    void closed(const QString& text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void close(QWidget* window);
};

} // namespace workbench
