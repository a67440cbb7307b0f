#pragma once

#include "ztbase/ztbaseglobal.h"

#include <QByteArray>
#include <QString>

#include <exception>

/// A failure inside the host, told in two texts: where it happened and what happened.
///
/// The three classes below are unrelated on purpose: a handler for one does not catch another.
template <typename Tag>
class HostException : public std::exception
{
public:
    HostException(QString place, QString message)
        : m_place(std::move(place))
        , m_message(std::move(message))
        , m_what((m_place + QLatin1String(": ") + m_message).toUtf8())
    {
    }

    [[nodiscard]] const QString& GetPlace() const { return m_place; }
    [[nodiscard]] const QString& GetMessage() const { return m_message; }
    /// "place: message" in UTF-8.
    [[nodiscard]] const char* what() const noexcept override { return m_what.constData(); }

private:
    QString m_place;
    QString m_message;
    QByteArray m_what;
};

/// Raised by the runtime base and the value framework.
class ZTBASE_EXPORT ZTException : public HostException<ZTException>
{
public:
    using HostException::HostException;
    ~ZTException() override;
};

/// Raised by the report generator's object model.
class ZTBASE_EXPORT RGException : public HostException<RGException>
{
public:
    using HostException::HostException;
    ~RGException() override;
};

/// Raised by reading and writing reports and job XML.
class ZTBASE_EXPORT ReportException : public HostException<ReportException>
{
public:
    using HostException::HostException;
    ~ReportException() override;
};
