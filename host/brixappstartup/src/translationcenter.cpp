#include "brixappstartup/translationcenter.h"

#include "faultpoints/faultpoint.h"

#include <QCoreApplication>
#include <QLocale>

namespace {

/// The loaded and installed translations of a namespace; empty when there is no file, or no application to install in.
std::shared_ptr<QTranslator> install(const QString& translationNamespace, const QString& folder)
{
    if (QCoreApplication::instance() == nullptr)
        return nullptr;
    auto translator = std::make_shared<QTranslator>();
    if (!translator->load(QLocale(), translationNamespace, QStringLiteral("_"), folder) ||
        !QCoreApplication::installTranslator(translator.get()))
        return nullptr;
    return translator;
}

} // namespace

TranslationCenter::TranslationCenter() = default;
TranslationCenter::~TranslationCenter() = default;

TranslationCenter* TranslationCenter::Instance()
{
    faults::mayRaise("TranslationCenter::Instance");
    // Lives for the whole process: libraries may unregister while static objects are being destroyed.
    static TranslationCenter* const instance = new TranslationCenter;
    return instance;
}

void TranslationCenter::Register(const QString& translationNamespace)
{
    faults::mayRaise("TranslationCenter::Register");
    // Counted before installing: the application tells its widgets of the new language, and one of them may register
    // too.
    if (++m_entries[translationNamespace].count > 1)
        return;
    std::shared_ptr<QTranslator> translator = install(translationNamespace, m_folder);
    const auto entry = m_entries.find(translationNamespace);
    if (entry != m_entries.end())
        entry->translator = std::move(translator);
}

void TranslationCenter::Unregister(const QString& translationNamespace)
{
    faults::mayRaise("TranslationCenter::Unregister");
    const auto entry = m_entries.find(translationNamespace);
    if (entry == m_entries.end() || --entry->count > 0)
        return;
    // The destructor of the translator takes it out of the application, if there still is one.
    const std::shared_ptr<QTranslator> translator = entry->translator;
    m_entries.erase(entry);
}

int TranslationCenter::GetRegistrationCount(const QString& translationNamespace) const
{
    return m_entries.value(translationNamespace).count;
}

bool TranslationCenter::IsTranslated(const QString& translationNamespace) const
{
    return m_entries.value(translationNamespace).translator != nullptr;
}

void TranslationCenter::SetTranslationFolder(const QString& folder)
{
    m_folder = folder;
}
