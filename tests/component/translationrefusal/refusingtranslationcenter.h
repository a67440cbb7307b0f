#pragma once

#include <QStringList>
#include <QtGlobal>

namespace testsupport {

/// What the translation centre of this library was asked for, as "Register <name>" and "Unregister <name>".
Q_DECL_EXPORT QStringList& translationCalls();

/// The calls, written as above, that it answers with an exception.
Q_DECL_EXPORT QStringList& refusedTranslationCalls();

} // namespace testsupport
