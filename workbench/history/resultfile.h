#pragma once

#include "history/resultquery.h"

#include <QString>

#include <atomic>
#include <exception>

namespace workbench {

/// How much a store keeps. The newest result is always kept.
struct HistoryLimits
{
    int maxResults = 500000;
    qint64 maxBytes = 256LL * 1024 * 1024; ///< of the file's pages in use
    int maxAgeDays = 90;                   ///< since a result was stored, whenever it was measured
};

/// Why an operation on a file of results failed.
class ResultFileError : public std::exception
{
public:
    enum class Kind
    {
        Locked, ///< by another connection; passes by itself
        Other,
    };

    ResultFileError(QString sentence, Kind kind);

    /// For people: "file: cannot be opened: reason".
    [[nodiscard]] QString sentence() const { return m_sentence; }
    [[nodiscard]] Kind kind() const { return m_kind; }
    [[nodiscard]] const char* what() const noexcept override { return m_text.constData(); }

private:
    QString m_sentence;
    QByteArray m_text; // the sentence in UTF-8
    Kind m_kind;
};

/// An open SQLite file of results (docs/history-store.md).
///
/// Every operation takes as long as the disk does and waits up to a second for other connections; all operations,
/// construction and destruction belong to one thread. What is in the file are whole results at any time, whatever
/// becomes of the process. Several programs may have the same file open.
class ResultFile
{
public:
    /// Opens @p file, creates it in an existing folder, and removes what is beyond @p limits. Throws ResultFileError
    /// when that fails; a file that is damaged, of a newer schema or of another program stays as it is.
    ResultFile(const QString& file, const HistoryLimits& limits);
    ResultFile(const ResultFile&) = delete;
    ResultFile& operator=(const ResultFile&) = delete;

    /// Why a result cannot be stored, as part of a sentence; empty when it can. It needs a date and a time of day, and
    /// all its numbers have to be finite. May be called from any thread.
    [[nodiscard]] static QString objection(const DfResult& result);

    /// Adds a result that has no objection(), then removes the oldest ones beyond the limits, both or none. Throws
    /// ResultFileError.
    void append(const DfResult& result);
    /// The results that @p query asks for, as they were at one moment. Ends early, with any part of the answer, once
    /// @p isCancelled. Throws ResultFileError.
    [[nodiscard]] ResultAnswer find(const ResultQuery& query, const std::atomic<bool>& isCancelled) const;

private:
    /// A named connection that is closed and taken out of Qt's register with its last query gone.
    struct Connection
    {
        Connection();
        ~Connection();
        QString name;
    };

    void open(const QString& path);
    [[nodiscard]] bool isEmpty() const;
    void requireStore() const;
    void checkContent() const;
    void createSchema();
    void removeOldest();
    void insert(const DfResult& result);

    QString m_file; // as it was given, for sentences
    HistoryLimits m_limits;
    Connection m_connection;
};

} // namespace workbench
