#pragma once

#include "brixappstartup/brixappstartupglobal.h"

#include <QHash>
#include <QString>
#include <QTranslator>

#include <memory>

/// Keeps the translations of the registered namespaces installed in the application. GUI thread only.
///
/// The translations of a namespace are the Qt file "<namespace>_<language>.qm" in the translation folder, in the
/// language of the application's default locale. A namespace without such a file is registered all the same and stays
/// untranslated.
class BRIXAPPSTARTUP_EXPORT TranslationCenter
{
public:
    /// The one translation centre, never null.
    static TranslationCenter* Instance();

    TranslationCenter(const TranslationCenter&) = delete;
    TranslationCenter& operator=(const TranslationCenter&) = delete;
    virtual ~TranslationCenter();

    /// Counts one more user of the namespace; the first one loads its translations.
    virtual void Register(const QString& translationNamespace);
    /// Counts one user less; the last one unloads the translations. Unknown names are ignored.
    virtual void Unregister(const QString& translationNamespace);

    [[nodiscard]] int GetRegistrationCount(const QString& translationNamespace) const;
    [[nodiscard]] bool IsTranslated(const QString& translationNamespace) const;

    /// For the host: where the translation files are. Counts for namespaces registered from now on.
    void SetTranslationFolder(const QString& folder);

private:
    TranslationCenter();

    struct Entry
    {
        int count = 0;
        std::shared_ptr<QTranslator> translator; // empty: no translations
    };
    QHash<QString, Entry> m_entries;
    QString m_folder;
};
