// Scripts of forms: whatever a script does, it ends, a failed one changes nothing, and no other form notices.

#include "fuzz/fuzzing.h"
#include "kt270/pgxmlformular.h"
#include "kt270/pgxmlparser.h"

#include <QElapsedTimer>
#include <QRegularExpression>

#include <memory>

using KT270::PgXmlFormular;
using KT270::PgXmlParser;

namespace {

std::unique_ptr<PgXmlFormular> makeForm()
{
    static const QString description = QStringLiteral(R"(<pgxml name="Set" title="Settings" context="Fuzz">
  <field name="Count" type="integer" label="Count" row="1"/>
  <group name="Detail" label="Detail" row="2">
    <field name="Detail/Lower" type="integer" label="Lower" row="3"/>
  </group>
</pgxml>)");
    PgXmlParser parser;
    std::unique_ptr<PgXmlFormular> form(parser.ParsePGXML(description));
    FUZZ_REQUIRE(form != nullptr);
    form->CreateValueTree();
    return form;
}

/// The watchdog ends what a script does itself, not what a single function of the engine does on its behalf, such as
/// the search of a list with millions of places: scripts that have large numbers, or might make some, are left out.
bool isModest(const QString& script)
{
    static const QRegularExpression large(QStringLiteral("\\d{5}|\\d\\.?[eE]|0[xX]|[*]|<<|>>>|MAX|Infinity|repeat"));
    return !large.match(script).hasMatch();
}

/// The form's text tells which of its fields are enabled.
bool isPossible(const QString& text)
{
    const QLatin1String possible[] = {
        QLatin1String("<Set><Count>0</Count><Detail/></Set>"),
        QLatin1String("<Set><Count>0</Count><Detail><Lower>0</Lower></Detail></Set>"),
        QLatin1String("<Set><Detail/></Set>"),
        QLatin1String("<Set><Detail><Lower>0</Lower></Detail></Set>"),
    };
    for (const QLatin1String& each : possible) {
        if (text == each)
            return true;
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString script = fuzzing::text(fuzzing::bytes(data, size));
    if (!isModest(script))
        return -1;
    const std::unique_ptr<PgXmlFormular> other = makeForm();
    const std::unique_ptr<PgXmlFormular> form = makeForm();
    const QString before = form->GetXmlString();
    FUZZ_REQUIRE(isPossible(before));
    QElapsedTimer clock;
    clock.start();
    if (!form->EvaluateScript(script))
        FUZZ_REQUIRE(form->GetXmlString() == before);
    constexpr qint64 longest = 5000; // ms; a script has a second, and the machine may have more to do
    FUZZ_REQUIRE(clock.elapsed() < longest);
    FUZZ_REQUIRE(isPossible(form->GetXmlString()));
    // The other form keeps its "form" and its language as they were.
    FUZZ_REQUIRE(other->EvaluateScript(QStringLiteral("form.setEnabled(\"Count\", [1, 2].indexOf(2) === 1);")));
    FUZZ_REQUIRE(other->GetXmlString() == QLatin1String("<Set><Count>0</Count><Detail/></Set>"));
    return 0;
}
