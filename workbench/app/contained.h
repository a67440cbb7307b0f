#pragma once

#include <QCoreApplication>
#include <QString>

#include <exception>
#include <optional>
#include <utility>

namespace workbench {

/// What the exception being handled says, for the middle of a sentence: "an exception (out of range)". Only inside a
/// catch block.
[[nodiscard]] inline QString currentExceptionText()
{
    try {
        throw;
    } catch (const std::exception& exception) {
        return QCoreApplication::translate("workbench", "an exception (%1)").arg(QString::fromUtf8(exception.what()));
    } catch (...) {
        return QCoreApplication::translate("workbench", "an exception of an unknown kind");
    }
}

/// Calls foreign code. Nothing when it returns; else the text of what it threw, copied, so that the code that threw may
/// be unloaded.
template <typename Call>
[[nodiscard]] std::optional<QString> contained(Call&& call)
{
    try {
        std::forward<Call>(call)();
        return std::nullopt;
    } catch (...) {
        return currentExceptionText();
    }
}

} // namespace workbench
