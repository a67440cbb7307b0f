#pragma once

#include <QString>

namespace workbench {

/// Texts of drivers, files and components, made fit for the places that show them. None of these may be taken for more
/// than a text: not for markup, which has files read, nor for orders to a terminal.

/// The beginning of a text that is too long for any line of a view, with an ellipsis. What is behind it cannot be seen,
/// but would be laid out at every paint.
[[nodiscard]] QString beginningOf(const QString& text);

/// @p text for a tool tip or another place where Qt looks for markup by itself: shown as it stands, of a long one the
/// beginning.
[[nodiscard]] QString asToolTip(const QString& text);

/// @p text in one line of a terminal. Control characters, which a terminal obeys, are shown as pictures of themselves;
/// characters that reverse the direction of what follows, and halves of characters, by the replacement character. Of a
/// long text the beginning.
[[nodiscard]] QString forTerminal(const QString& text);

/// The same JSON, with the characters that forTerminal() replaces written as "\uXXXX".
[[nodiscard]] QString jsonForTerminal(const QString& json);

} // namespace workbench
