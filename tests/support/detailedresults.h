#pragma once

#include <QAbstractButton>

namespace testsupport {

/// Opens the window of detailed results as the operator does: with the button of @p toolbar, which acts on the press.
inline void openDetailedResults(const QWidget& toolbar)
{
    auto* const button = toolbar.findChild<QAbstractButton*>(QStringLiteral("DetailedResults"));
    button->setDown(true);
    emit button->pressed();
}

} // namespace testsupport
