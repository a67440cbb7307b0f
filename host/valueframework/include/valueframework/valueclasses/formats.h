#pragma once

#include "valueframework/valueframeworkglobal.h"

#include <QString>

namespace values {

/// How a kind's content is written for and read from people. FromText leaves @p value alone when it returns false.
template <typename T>
struct FormatBool;
template <typename T>
struct FormatInt;
template <typename T>
struct FormatFloat;
template <typename T>
struct FormatString;

/// "true" and "false"; "1" and "0" are read as well.
template <>
struct VALUEFRAMEWORK_EXPORT FormatBool<bool>
{
    static QString ToText(bool value);
    static bool FromText(const QString& text, bool& value);
};

template <>
struct VALUEFRAMEWORK_EXPORT FormatInt<int>
{
    static QString ToText(int value);
    static bool FromText(const QString& text, int& value);
};

/// Fixed notation in the fewest digits that read back exactly; a decimal comma is read as well.
template <>
struct VALUEFRAMEWORK_EXPORT FormatFloat<double>
{
    static QString ToText(double value);
    static bool FromText(const QString& text, double& value);
};

template <>
struct VALUEFRAMEWORK_EXPORT FormatString<QString>
{
    static QString ToText(const QString& value);
    static bool FromText(const QString& text, QString& value);
};

/// How a kind's content is written to a recording: lossless and on one line.
template <typename T>
struct VALUEFRAMEWORK_EXPORT StreamFormat
{
    static QString ToText(const T& value);
};

} // namespace values
