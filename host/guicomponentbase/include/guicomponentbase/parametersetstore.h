#pragma once

#include "guicomponentbase/guicomponentbaseglobal.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace VelmarGui {

/// For the host: parameter sets that people keep under names of their own, each as one XML file "<name>.xml" in one
/// folder. What the XML says is a matter of the component that reports it and takes it back.
///
/// Nothing is kept in memory: files that come, change or go from outside are seen at the next call. A file is written
/// whole or not at all. Any thread; who works on one folder from several takes care of their order.
class GUICOMPONENTBASE_EXPORT ParameterSetStore
{
public:
    /// The longest text that is kept, in bytes of UTF-8.
    static constexpr int MaxSize = 1024 * 1024;

    /// Why an operation was not done: a sentence for people with the file and the reason. Empty: it was done.
    using Error = QString;

    /// What Load() found: the text, or why there is none.
    struct Loaded
    {
        std::optional<QString> xml;
        Error error;
    };

    /// @p folder need not exist; the first Save() makes it.
    explicit ParameterSetStore(const QString& folder);

    [[nodiscard]] const QString& GetFolder() const { return m_folder; }

    /// What is wrong with @p name: it has to have something in it, no "/", "\" or control character, no "." at its
    /// beginning, no blank at either end, and no more than 200 bytes of UTF-8. Empty: nothing.
    [[nodiscard]] static Error CheckName(const QString& name);

    /// The names of all sets, whatever is in their files, sorted with upper and lower case together. Empty for a folder
    /// that does not exist.
    [[nodiscard]] QStringList GetNames() const;
    [[nodiscard]] bool Contains(const QString& name) const;

    /// Refused is a text that is not well-formed XML, also by Save(); a byte order mark and blanks around it are left
    /// out.
    [[nodiscard]] Loaded Load(const QString& name) const;
    /// Takes the place of a set that has this name.
    [[nodiscard]] Error Save(const QString& name, const QString& xml) const;
    /// Refused when there is a set @p newName. The same name again changes nothing.
    [[nodiscard]] Error Rename(const QString& name, const QString& newName) const;
    [[nodiscard]] Error Delete(const QString& name) const;

private:
    [[nodiscard]] QString GetFile(const QString& name) const;

    QString m_folder;
};

} // namespace VelmarGui
