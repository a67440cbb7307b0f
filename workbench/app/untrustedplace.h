#pragma once

#include <QString>

#include <optional>

namespace workbench {

/// Where anybody on this machine may exchange @p file for something else; nothing when nobody but its owners can.
///
/// Looked at are the file, the folder it is in, and all folders above it, along every symbolic link on the way:
/// - the file itself and its folder must not be writable by everybody, sticky or not: beside a library anybody could
///   put another one that it loads;
/// - of the folders above, one writable by everybody will do when it is sticky, as /tmp is: there only owners rename
/// and
///   remove what is theirs, so the folders below stay what they are.
///
/// Folders that @p program, the one which is running, is in or below are not looked at: who could exchange something
/// there could have exchanged the program. What owner and group may do is their affair. A file that does not exist is
/// not looked at.
[[nodiscard]] std::optional<QString> writableByEverybody(const QString& file, const QString& program);

} // namespace workbench
