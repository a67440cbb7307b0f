// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// Settings written as XML and read back, against a bare pair of Qt's stream classes with the same text.

#include "benchmarkmain.h"

#include "jobxml/df_settings.h"

#include <QCoreApplication>
#include <QVector>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace {

using JobXml::DF_Settings;

DF_Settings settings()
{
    DF_Settings all;
    JobXml::Bandwidth bandwidth;
    bandwidth.SetValue(12500.0);
    all.SetBandwidth(bandwidth);
    all.SetAveraging(250.0);
    all.SetDFMode(DF_Settings::DFModeGate);
    all.GetDetail().SetQualityThreshold(42);
    all.GetDetail().SetLevelThreshold(-12.5);
    all.SetFrequencyOffset(1562.5);
    all.SetWorkflow(DF_Settings::WorkflowContinuous);
    all.SetLocateType(DF_Settings::LocateTypeOnline);
    all.SetActivity(DF_Settings::ActivityDFAndLocate);
    all.SetActivityTrigger(DF_Settings::ActivityTriggerSignal);
    return all;
}

/// A step in writing an element: its beginning, with a text its whole, or its end.
struct Step
{
    QString element;
    QString text;
};

/// What the stream classes are given when @p xml is written.
QVector<Step> stepsOf(const QString& xml)
{
    QVector<Step> steps;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            steps.push_back({reader.name().toString(), QString()});
            break;
        case QXmlStreamReader::Characters:
            steps.back().text = reader.text().toString();
            break;
        case QXmlStreamReader::EndElement:
            if (steps.back().text.isNull() || steps.back().element != reader.name())
                steps.push_back({});
            break;
        default:
            break;
        }
    }
    return steps;
}

QString written(const QVector<Step>& steps)
{
    QString xml;
    QXmlStreamWriter writer(&xml);
    for (const Step& step : steps) {
        if (step.element.isNull())
            writer.writeEndElement();
        else if (step.text.isNull())
            writer.writeStartElement(step.element);
        else
            writer.writeTextElement(step.element, step.text);
    }
    return xml;
}

void roundTrip(benchmark::State& state)
{
    const DF_Settings all = settings();
    DF_Settings read;
    for (auto _ : state) {
        if (!read.SetXmlString(all.GetXmlString()))
            state.SkipWithError("settings that cannot be read");
    }
    if (read.GetXmlString() != all.GetXmlString())
        state.SkipWithError("other settings");
}

void bareStreams(benchmark::State& state)
{
    const QString expected = settings().GetXmlString();
    const QVector<Step> steps = stepsOf(expected);
    for (auto _ : state) {
        QXmlStreamReader reader(written(steps));
        int characters = 0;
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::Characters)
                characters += reader.text().size();
        }
        benchmark::DoNotOptimize(characters);
    }
    if (written(steps) != expected)
        state.SkipWithError("another text");
}

BENCHMARK(roundTrip);
BENCHMARK(bareStreams);

} // namespace

DFL_BENCHMARK_MAIN(QCoreApplication)
