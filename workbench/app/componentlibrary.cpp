#include "app/componentlibrary.h"

#include "app/contained.h"
#include "app/untrustedplace.h"

#include "guicomponentbase/iguicomponent.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace workbench {

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("workbench::ComponentError", text);
}

} // namespace

QString ComponentError::text() const
{
    // Concatenated: a file's name may hold what looks like a place marker.
    const QString place = file + QStringLiteral(": ");
    const auto sentence = [&place](const char* reason) { return place + tr(reason); };
    const auto sentenceWithDetail = [&](const char* reason) { return place + tr(reason).arg(detail); };
    switch (kind) {
    case Kind::FileMissing:
        return sentence("there is no such component library.");
    case Kind::UnsafePlace:
        return sentenceWithDetail(
            "the component library is not loaded, because everybody can write to %1 and could have "
            "put other code there (--allow-unsafe-folder loads it all the same).");
    case Kind::NotALibrary:
        return sentenceWithDetail("the file cannot be loaded as a component library: %1");
    case Kind::CreateMissing:
        return sentence("the library is no component: it does not export ZTCreate.");
    case Kind::DestroyMissing:
        return sentence("the library is no component: it does not export ZTDestroy.");
    case Kind::CreateThrew:
        return sentenceWithDetail("the component could not be created: ZTCreate let %1 out.");
    case Kind::CreateReturnedNull:
        return sentence("the component could not be created: ZTCreate returned nothing.");
    case Kind::WrongClass:
        return sentence("ZTCreate returned an object that is no GUI component.");
    case Kind::WidgetsThrew:
        return sentenceWithDetail("the component could not set its widgets up: it let %1 out.");
    case Kind::NoToolBar:
        return sentence("the component has no toolbar.");
    case Kind::ServicesThrew:
        return sentenceWithDetail("the component could not take the services over: it let %1 out.");
    case Kind::AnnouncementThrew:
        return sentenceWithDetail("the component could not bind to the values: it let %1 out.");
    }
    return {};
}

LoadedComponent::LoadedComponent(const QString& file)
    : m_library(file)
{
    m_library.setLoadHints(QLibrary::PreventUnloadHint);
}

LoadedComponent::~LoadedComponent()
{
    if (m_instance == nullptr)
        return;
    // A library without ZTDestroy has made no instance. NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
    if (const auto thrown = contained([this] { m_destroy(m_instance); }))
        qWarning("%s", qPrintable(tr("%1: ZTDestroy let %2 out.").arg(file(), *thrown)));
}

std::variant<std::unique_ptr<LoadedComponent>, ComponentError>
loadComponent(const QString& file, const QString& componentName, LibraryPlace place)
{
    using Kind = ComponentError::Kind;
    const auto failed = [&file](Kind kind, const QString& detail = {}) { return ComponentError{kind, file, detail}; };

    if (!QFileInfo(file).isFile())
        return failed(Kind::FileMissing);
    if (place == LibraryPlace::Safe) {
        if (const auto where = writableByEverybody(file, QCoreApplication::applicationFilePath()))
            return failed(Kind::UnsafePlace, *where);
    }
    // An absolute path keeps the platform from searching its own folders.
    std::unique_ptr<LoadedComponent> loaded(new LoadedComponent(QFileInfo(file).absoluteFilePath()));
    QLibrary& library = loaded->m_library;
    if (!library.load())
        return failed(Kind::NotALibrary, library.errorString());
    const auto create = reinterpret_cast<ZTCreateFunction>(library.resolve("ZTCreate"));
    if (create == nullptr)
        return failed(Kind::CreateMissing);
    loaded->m_destroy = reinterpret_cast<ZTDestroyFunction>(library.resolve("ZTDestroy"));
    if (loaded->m_destroy == nullptr)
        return failed(Kind::DestroyMissing);

    const std::wstring wideName = componentName.toStdWString();
    if (const auto thrown = contained([&] { loaded->m_instance = create(wideName.c_str()); }))
        return failed(Kind::CreateThrew, *thrown);
    if (loaded->m_instance == nullptr)
        return failed(Kind::CreateReturnedNull);
    loaded->m_component = dynamic_cast<VelmarGui::IGuiComponent*>(loaded->m_instance);
    if (loaded->m_component == nullptr)
        return failed(Kind::WrongClass);
    return loaded;
}

} // namespace workbench
