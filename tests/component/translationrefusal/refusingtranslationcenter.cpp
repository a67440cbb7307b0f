// A start-up library whose translation centre keeps a record and refuses what it is told to. It takes the real one's
// place under the real one's name: a component that is loaded into the same process finds this one loaded already.

#include "refusingtranslationcenter.h"

#include "brixappstartup/translationcenter.h"

#include <stdexcept>

namespace {

void answer(const QString& call)
{
    testsupport::translationCalls().append(call);
    if (testsupport::refusedTranslationCalls().contains(call))
        throw std::runtime_error("refused");
}

} // namespace

QStringList& testsupport::translationCalls()
{
    static QStringList calls;
    return calls;
}

QStringList& testsupport::refusedTranslationCalls()
{
    static QStringList calls;
    return calls;
}

TranslationCenter::TranslationCenter() = default;
TranslationCenter::~TranslationCenter() = default;

TranslationCenter* TranslationCenter::Instance()
{
    static TranslationCenter instance;
    return &instance;
}

void TranslationCenter::Register(const QString& translationNamespace)
{
    answer(QStringLiteral("Register ") + translationNamespace);
}

void TranslationCenter::Unregister(const QString& translationNamespace)
{
    answer(QStringLiteral("Unregister ") + translationNamespace);
}
