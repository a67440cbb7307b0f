// Form descriptions: what is refused is refused with reasons; what is taken gives a form that reads what it writes.

#include "fuzz/fuzzing.h"
#include "kt270/pgxmlformular.h"
#include "kt270/pgxmlparser.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

#include <memory>

using KT270::PgXmlFormular;
using KT270::PgXmlParser;

namespace {

bool isWellFormed(const QString& xml)
{
    QXmlStreamReader reader(xml);
    while (!reader.atEnd())
        reader.readNext();
    return !reader.hasError();
}

/// Errors name a line of the text, in ascending order.
void requireErrors(const QStringList& errors, const QString& description)
{
    // XML counts a carriage return as the end of a line.
    const int lines = description.count(QLatin1Char('\n')) + description.count(QLatin1Char('\r')) + 1;
    int last = 1;
    for (const QString& error : errors) {
        bool isNumber = false;
        const int line = error.section(QLatin1Char(':'), 1, 1).toInt(&isNumber);
        FUZZ_REQUIRE(error.startsWith(QLatin1String("PGXML:")) && isNumber);
        FUZZ_REQUIRE(line >= last && line <= lines);
        last = line;
    }
}

/// Values for whatever the fields are.
struct BoundValues
{
    BoundValues()
    {
        number.SetMinMax(-1e9, 1e9, 0.5, nullptr);
        whole.SetMinMax(-100, 100, 1, nullptr);
        selection.AddItems({QStringLiteral("Normal"), QStringLiteral("Continuous"), QStringLiteral("12 kHz")}, nullptr);
        selection.SelectIndex(1, nullptr);
    }

    void bindTo(PgXmlFormular& form, const QString& description)
    {
        static const QRegularExpression names(QStringLiteral("name=\"([^\"]*)\""));
        auto match = names.globalMatch(description);
        for (bool withTexts = false; match.hasNext(); withTexts = !withTexts) {
            const QString name = match.next().captured(1);
            form.InitEnumeration(name, &selection, withTexts ? QStringList{QStringLiteral("Norm")} : QStringList());
            const int kinds = static_cast<int>(form.InitVTValue(name, &number)) +
                              static_cast<int>(form.InitVTValue(name, &whole)) +
                              static_cast<int>(form.InitVTValue(name, &selection));
            FUZZ_REQUIRE(kinds <= 1);
        }
    }

    values::DoubleValue number;
    values::IntValue whole;
    values::ValueSelection selection;
};

void requireStable(PgXmlFormular& form)
{
    const QString text = form.GetXmlString();
    FUZZ_REQUIRE(isWellFormed(text));
    FUZZ_REQUIRE(form.SetXmlString(text));
    FUZZ_REQUIRE(form.GetXmlString() == text);
}

} // namespace

// A description and, behind a NUL, a text for the form that it makes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray input = fuzzing::bytes(data, size);
    const int separator = input.indexOf('\0');
    const QString description = fuzzing::text(separator < 0 ? input : input.left(separator));
    const QString formText = separator < 0 ? QString() : fuzzing::text(input.mid(separator + 1));

    PgXmlParser parser;
    BoundValues values; // before the form: they may go at any time, but these stay
    const std::unique_ptr<PgXmlFormular> form(parser.ParsePGXML(description));
    FUZZ_REQUIRE((form != nullptr) == parser.GetErrors().isEmpty());
    if (form == nullptr) {
        requireErrors(parser.GetErrors(), description);
        return 0;
    }
    FUZZ_REQUIRE(form->GetXmlString().isEmpty());
    FUZZ_REQUIRE(!form->SetXmlString(formText));
    form->CreateValueTree();
    values.bindTo(*form, description);
    form->CreateGUI(true);
    requireStable(*form);
    const QString before = form->GetXmlString();
    if (!form->SetXmlString(formText))
        FUZZ_REQUIRE(form->GetXmlString() == before);
    requireStable(*form);
    return 0;
}
