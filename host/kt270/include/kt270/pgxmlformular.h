#pragma once

#include "kt270/kt270global.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

class IObserver;
class QWidget;

namespace values {
class ValueBase;
class ValueSelection;
} // namespace values

namespace VelmarGui {
class GuiComponentCommon;
}

namespace KT270 {

class PgXmlSheet;

/// A form: fields that an operator edits, shown on a sheet and exchanged as one XML text. Made by PgXmlParser.
///
/// The form keeps the contents of its fields itself. A field may be bound to a value, which then lends it limits, step
/// and content; what the operator enters does not go to the bound value but into the form's text. Only the state of the
/// bound value follows the field: 0 (in use) when the field is enabled, 2 (not in use) when it is disabled. Bound
/// values may go at any time.
///
/// A disabled field keeps its content but is missing in the form's text. The fields of a group ("Detail") hang
/// together: the group's check box is checked while any of them is enabled, and the operator's click enables or
/// disables them all. They are disabled at first.
///
/// The operations may come in any order after CreateValueTree(); the order of a host is CreateValueTree, InitVTValue,
/// InitEnumeration, CreateGUI, SetXmlString, Show. GUI thread only.
class KT270_EXPORT PgXmlFormular : public QObject
{
    Q_OBJECT
public:
    ~PgXmlFormular() override;

    /// @name Set-up
    /// @{

    /// Makes the contents of the fields; without them the form is empty and the operations below do nothing and are
    /// false. A second call does nothing.
    void CreateValueTree();

    /// Binds @p field (its path, such as "Detail/QualityThreshold") to @p value and takes limits, step and content
    /// over; of a selection the current item, if the field's enumeration has it. A null @p value only ends the binding.
    /// False, with nothing changed, for an unknown field and a value of another kind (an integer field takes an
    /// integer, a number field a double, an enumeration field a selection).
    bool InitVTValue(const QString& field, values::ValueBase* value);

    /// Gives the fields of @p enumeration the items of @p items, and the texts by which they go into the form's text:
    /// with
    /// @p texts (one per item; a missing one is the item's own text) a text, without them the item's number. A bound
    /// field selects its value's current item, any other the one that has the same text as before, or none. False, with
    /// nothing changed, for an unknown enumeration and without items.
    bool InitEnumeration(const QString& enumeration, values::ValueSelection* items, const QStringList& texts = {});

    /// Puts the fields on the sheet. @p online: edits take effect at once and the sheet stays marked as modified until
    /// settings come back with SetXmlString(); otherwise until GetXmlString() collects them. A second call does
    /// nothing.
    void CreateGUI(bool online);
    /// @}

    /// @name Contents
    /// None of these operations reports a modification.
    /// @{

    /// Takes the contents of all fields over from @p xml and takes the sheet's modification mark away. Elements that
    /// the form does not know are ignored and not kept; a field without element, or with a content that it cannot take
    /// (no number, out of limits, no item), stays as it is. An item's text need only match in the first four
    /// characters. False, with nothing changed, when the text is not well-formed, has another root, a document type
    /// declaration, a field twice, more than 32 levels or more than 65536 characters.
    bool SetXmlString(const QString& xml);

    /// The contents of all enabled fields, compact, in the order of the description. A selection without current item
    /// is left out. A group with no enabled field is an empty element. Empty before CreateValueTree().
    [[nodiscard]] QString GetXmlString();

    /// Runs @p code in the form's script engine; a call such as "setOverwriteThreshold(true);". The script sees the
    /// form object and the language's own objects, nothing else. What it asks of the form is done when it has ended
    /// without error. False, with nothing changed and a trace, when it fails or runs longer than a second.
    bool EvaluateScript(const QString& code);

    /// Takes limits and step of @p value over into the field bound to it, and with @p refresh its content too, in place
    /// of whatever the field has. @p observer caused the change of the value; it is not told of anything. A value bound
    /// to no field is ignored.
    void SetVTValue(values::ValueBase* value, IObserver* observer, bool refresh);
    /// @}

    /// @name Display
    /// @{

    /// The sheet, there from the beginning; null when its parent has deleted it.
    [[nodiscard]] PgXmlSheet* GetSheet() const;
    /// What goes into a layout: the sheet in a scroll area. Deleted with the form; null when its parent has deleted it.
    [[nodiscard]] QWidget* GetWidget() const;
    void Show();

    /// Keeps the form's configuration (whether the sheet is collapsed) in @p common under @p name for as long as that
    /// lives, so that the next form with this name looks the same, and takes over what is kept there. Null: kept
    /// nowhere.
    void SetConfigObject(VelmarGui::GuiComponentCommon* common, const QString& name);
    /// Makes the form look as its configuration says.
    void RestoreConfiguration();
    /// @}

signals:
    /// The operator has edited the form, or its sheet was marked as modified.
    void si_parametersModified();

private:
    friend class PgXmlParser;
    class Private;
    explicit PgXmlFormular(std::unique_ptr<Private> contents);
    std::unique_ptr<Private> d;
};

} // namespace KT270
