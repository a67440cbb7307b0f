#pragma once

#include <QLibrary>
#include <QString>

#include <memory>
#include <variant>

class IDllInstance;

namespace VelmarGui {
class IGuiComponent;
}

namespace workbench {

/// Why a component cannot be used.
struct ComponentError
{
    enum class Kind
    {
        FileMissing,        ///< there is no such file
        UnsafePlace,        ///< anybody could have exchanged the file
        NotALibrary,        ///< the file cannot be loaded
        CreateMissing,      ///< the library does not export ZTCreate
        DestroyMissing,     ///< the library does not export ZTDestroy
        CreateThrew,        ///< ZTCreate let an exception out
        CreateReturnedNull, ///< ZTCreate returned nothing
        WrongClass,         ///< what ZTCreate returned is no GUI component
        WidgetsThrew,       ///< making or placing the widgets let an exception out
        NoToolBar,          ///< there is no toolbar after the widgets were made
        ServicesThrew,      ///< taking the services over let an exception out
        AnnouncementThrew,  ///< binding to the values let an exception out
    };

    Kind kind;
    QString file;
    QString detail; ///< what the platform or the exception said; empty when there is nothing to say

    /// A full sentence that names the file and the reason.
    [[nodiscard]] QString text() const;
};

/// From where a component library may be loaded.
enum class LibraryPlace
{
    Safe, ///< only from where not everybody can write
    Any
};

/// A component object and the library it comes from. The end of its life hands the object back to the library.
///
/// A library whose code has run stays in memory until the process ends. Nobody can know what of it is still in use: a
/// text literal handed to a value, for one, is shared with the library and not copied.
class LoadedComponent
{
public:
    ~LoadedComponent();
    LoadedComponent(const LoadedComponent&) = delete;
    LoadedComponent& operator=(const LoadedComponent&) = delete;

    [[nodiscard]] VelmarGui::IGuiComponent& component() const { return *m_component; }
    [[nodiscard]] QString file() const { return m_library.fileName(); }

private:
    friend std::variant<std::unique_ptr<LoadedComponent>, ComponentError> loadComponent(const QString&, const QString&,
                                                                                        LibraryPlace);
    explicit LoadedComponent(const QString& file);

    QLibrary m_library;
    IDllInstance* m_instance = nullptr;
    VelmarGui::IGuiComponent* m_component = nullptr; // the same object
    void (*m_destroy)(IDllInstance*) = nullptr;
};

/// Loads the component library @p file and has it create its component under the bare name @p componentName. What is
/// loaded runs with all the rights of the program: code that anybody could have put there is refused unless @p place
/// says otherwise. GUI thread only.
[[nodiscard]] std::variant<std::unique_ptr<LoadedComponent>, ComponentError>
loadComponent(const QString& file, const QString& componentName, LibraryPlace place = LibraryPlace::Safe);

} // namespace workbench
