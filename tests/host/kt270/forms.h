#pragma once

#include "kt270/pgxmlformular.h"
#include "kt270/pgxmlparser.h"

#include <QtTest>

#include <memory>

namespace testsupport {

/// A description with one field of each type, a group of two fields, and @p script.
inline QString describedForm(const QString& script = QString())
{
    return QStringLiteral(R"(<pgxml name="Set" title="Settings" context="TestForm">
  <enumeration name="enumColour"/>
  <enumeration name="enumSize"/>
  <field name="Size" type="enumeration" enumeration="enumSize" label="&amp;Size" row="4"/>
  <field name="Count" type="integer" label="&amp;Count" unit="pieces" row="2"/>
  <field name="Length" type="number" label="&amp;Length" unit="m" row="6"/>
  <field name="Colour" type="enumeration" enumeration="enumColour" label="C&amp;olour" row="3"/>
  <group name="Detail" label="&amp;Use limits" row="7">
    <field name="Detail/Lower" type="integer" label="Lo&amp;wer" row="8"/>
    <field name="Detail/Upper" type="integer" label="&amp;Upper" row="9"/>
  </group>
  <script><![CDATA[
    function useLimits(on) {
        form.setEnabled("Detail/Lower", on);
        form.setEnabled("Detail/Upper", on);
    }
    %1
  ]]></script>
</pgxml>)")
        .arg(script);
}

/// The form described by @p text, with contents but not yet shown on its sheet.
inline std::unique_ptr<KT270::PgXmlFormular> formFrom(const QString& text)
{
    KT270::PgXmlParser parser;
    std::unique_ptr<KT270::PgXmlFormular> form(parser.ParsePGXML(text));
    if (!form)
        qFatal("%s", qPrintable(parser.GetErrors().join(QLatin1Char('\n'))));
    form->CreateValueTree();
    return form;
}

} // namespace testsupport
