#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace workbench::csv {

/// One record of a comma-separated text. It may stand on several lines when quoted fields hold line breaks.
struct Record
{
    int line = 0; ///< where it begins, counted from 1
    QStringList fields;
};

/// A place where the text is no comma-separated text.
struct Flaw
{
    int line = 0;
    QString what;
};

/// What a text holds, in its order.
struct Table
{
    std::vector<Record> records;
    std::vector<Flaw> flaws;
};

/// Reads RFC 4180 in UTF-8: fields separated by commas, records by CRLF or LF; a field in quotes may hold commas, line
/// breaks and, doubled, quotes. A byte order mark is skipped, as are empty lines. Reading goes on behind a flaw.
[[nodiscard]] Table parse(const QByteArray& text);

/// A field as it is written: in quotes when it has to be.
[[nodiscard]] QString quoted(const QString& field);

} // namespace workbench::csv
