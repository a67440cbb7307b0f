#pragma once

#include "commandtable.h"
#include "dflocatesettingswidget.h"
#include "guicomponentbase/guicomponentcommon.h"
#include "kt270/pgxmlsheet.h"
#include "settingstable.h"
#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/traces.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPointer>
#include <QtTest>

#include <memory>
#include <stdexcept>
#include <utility>

namespace testsupport {

const QString componentRoot = QStringLiteral("/GUI/DFLocateComponent/");
const QString handlerRoot = QStringLiteral("/GUI/DFLocateHandler/");
const QString parameterRoot = componentRoot + QStringLiteral("Parameters/");
const QString globalRoot = QStringLiteral("/GLOBAL/");

/// Settings, and the text by which they travel. An empty field has no element.
struct Settings
{
    QString bandwidth = QStringLiteral("12000");
    QString averaging = QStringLiteral("0");
    QString mode = QStringLiteral("Norm");
    QString quality;
    QString level;
    QString offset = QStringLiteral("0");
    QString workflow = QStringLiteral("On request");
    QString locateType = QStringLiteral("No locate");
    QString activity = QStringLiteral("No DF/Locate");
    QString trigger = QStringLiteral("Manual");

    [[nodiscard]] QString text() const
    {
        const QString detail = element("QualityThreshold", quality) + element("LevelThreshold", level);
        return element("DF_Settings", element("Bandwidth", bandwidth) + element("Averaging", averaging) +
                                          element("DFMode", mode) + element("Detail", detail) +
                                          element("FrequencyOffset", offset) + element("Workflow", workflow) +
                                          element("LocateType", locateType) + element("Activity", activity) +
                                          element("ActivityTrigger", trigger));
    }

private:
    static QString element(const char* name, const QString& content)
    {
        return content.isEmpty() ? QString() : QStringLiteral("<%1>%2</%1>").arg(QLatin1String(name), content);
    }
};

/// The values of a driver, a host with its form folder, and the panel, not connected yet. The settings have the same
/// lists and limits as those that the panel makes itself.
class PanelBench
{
public:
    /// Values whose path below the driver's folder or the parameter folder is in @p without are left out; those in
    /// @p otherKind are there in a kind that nobody expects.
    explicit PanelBench(QStringList without = {}, QStringList otherKind = {})
        : m_without(std::move(without))
        , m_otherKind(std::move(otherKind))
    {
        common.SetFormFolder(QStringLiteral(FORM_FOLDER));
        for (const VelmarGui::ConfigEntry& entry : VelmarGui::ConfigTable) {
            const QString path = QString::fromLatin1(entry.path);
            if (m_otherKind.contains(path))
                tree.add<values::StringValue>(handlerRoot + path);
            else if (!m_without.contains(path))
                VelmarGui::createConfigValue(entry, handlerRoot);
        }
        if (auto* const commands = add<values::ValueSelection>(handlerRoot, QStringLiteral("Values/Commands"))) {
            for (std::size_t key = 0; key < VelmarGui::CommandNames.size(); ++key)
                commands->AddItem(QString::fromLatin1(VelmarGui::CommandNames[key]), 0.0, static_cast<int>(key));
            commands->Select(0);
        }
        add<values::StringValue>(parameterRoot, QStringLiteral("DF_Settings"));
        add<values::StringValue>(parameterRoot, QStringLiteral("DFLOCATE/ToDriver"));
        panel = new VelmarGui::DFLocateSettingsWidget(&common, componentRoot);
    }
    ~PanelBench() { delete panel; }
    PanelBench(const PanelBench&) = delete;
    PanelBench& operator=(const PanelBench&) = delete;

    FreshTree tree;
    VelmarGui::GuiComponentCommon common;
    QPointer<VelmarGui::DFLocateSettingsWidget> panel;

    /// @name Values, null when missing or of another kind
    /// @{
    template <typename T>
    static T* at(const QString& path)
    {
        return dynamic_cast<T*>(values::Tree::Instance()->FindValue(path));
    }
    static values::ValueSelection* selection(const char* name) { return at<values::ValueSelection>(below(name)); }
    static values::IntValue* number(const char* name) { return at<values::IntValue>(below(name)); }
    static values::DoubleValue* real(const char* name) { return at<values::DoubleValue>(below(name)); }
    static values::BoolValue* flag(const char* name) { return at<values::BoolValue>(below(name)); }
    static values::ValueSelection* extra(const char* name)
    {
        return at<values::ValueSelection>(componentRoot + QLatin1String(name));
    }
    static values::StringValue* driverSettings()
    {
        return at<values::StringValue>(parameterRoot + QStringLiteral("DF_Settings"));
    }
    static values::StringValue* toDriver()
    {
        return at<values::StringValue>(parameterRoot + QStringLiteral("DFLOCATE/ToDriver"));
    }
    static values::BoolValue* deviceReady()
    {
        return at<values::BoolValue>(globalRoot + QStringLiteral("DfDeviceReady"));
    }
    static values::ValueSelection* device(const char* name)
    {
        return at<values::ValueSelection>(globalRoot + QLatin1String(name));
    }
    /// @}

    [[nodiscard]] QString parameterSet() const
    {
        return common.GetParameterSet(componentRoot, QStringLiteral("DF_Settings"));
    }
    /// The host hands a parameter set in.
    void handIn(const QString& xml) { common.SetParameterSet(componentRoot, QStringLiteral("DF_Settings"), xml); }

    void connectTo(bool online)
    {
        if (online)
            panel->sl_VTConnected();
        else
            panel->sl_Offline();
    }

    /// @name The device's lists, as its driver announces them: content first, then one notification of the items
    /// @{
    void publishBandwidths(const QStringList& kilohertz, int current) const
    {
        publish("DeviceDfBandwidth", kilohertz, current,
                [](const QString& text) { return 1000.0 * text.section(QLatin1Char(' '), 0, 0).toDouble(); });
    }
    void publishAveraging(const QStringList& seconds, int current) const
    {
        publish("DeviceDfAveraging", seconds, current,
                [](const QString& text) { return 1000.0 * text.left(text.size() - 1).toDouble(); });
    }
    void publishModes(const QStringList& modes, int current) const
    {
        publish("DeviceDfMode", modes, current, [](const QString&) { return 0.0; });
    }
    static void announceDevice() { deviceReady()->HasChanged(ChangeContent, nullptr); }
    /// @}

    /// @name The form
    /// @{
    [[nodiscard]] KT270::PgXmlSheet* sheet() const { return panel->findChild<KT270::PgXmlSheet*>(); }
    template <typename Widget = QComboBox>
    [[nodiscard]] Widget* field(const char* name) const
    {
        return sheet() != nullptr ? qobject_cast<Widget*>(sheet()->GetFieldWidget(QLatin1String(name))) : nullptr;
    }
    [[nodiscard]] QString shown(const char* name) const { return field(name)->currentText(); }
    [[nodiscard]] double shownNumber(const char* name) const { return field<QDoubleSpinBox>(name)->value(); }
    /// The operator chooses an item of a field.
    void choose(const char* name, const QString& text) const
    {
        QComboBox* const comboBox = field(name);
        const int index = comboBox->findText(text);
        QVERIFY2(index >= 0, qPrintable(text));
        comboBox->setCurrentIndex(index);
        emit comboBox->activated(index);
    }
    /// The operator enters a number into a field.
    void enter(const char* name, int content) const
    {
        auto* const spin = field<QDoubleSpinBox>(name);
        spin->selectAll();
        QTest::keyClicks(spin, QString::number(content));
        QTest::keyClick(spin, Qt::Key_Return);
    }
    /// @}

private:
    static QString below(const char* name) { return handlerRoot + QLatin1String(name); }

    template <typename T>
    T* add(const QString& root, const QString& path)
    {
        if (m_otherKind.contains(path))
            tree.add<values::IntValue>(root + path);
        else if (!m_without.contains(path))
            return tree.add<T>(root + path);
        return nullptr;
    }

    template <typename Number>
    void publish(const char* name, const QStringList& texts, int current, Number number) const
    {
        values::ValueSelection* list = device(name);
        if (list == nullptr)
            list = tree.add<values::ValueSelection>(globalRoot + QLatin1String(name));
        list->StartTransaction(nullptr);
        list->DeleteItems();
        for (int i = 0; i < texts.size(); ++i)
            list->AddItem(texts[i], number(texts[i]), i);
        list->SelectIndex(current);
        list->EndTransaction(ChangeItems);
    }

    QStringList m_without;
    QStringList m_otherKind;
};

/// Everything that is written, in its order: contents ("Config/Mode=Gate"), states ("Config/Quality state 0"), item
/// lists
/// ("Config/Bandwidth items"), texts for the driver, same or not ("ToDriver=<...>"), and, before the next of these, a
/// new text of the parameter set ("set=<...>"). A leading "C:" is the component's folder, "P:" its parameters', "G:"
/// the global one.
class Journal : public IObserver
{
public:
    explicit Journal(const PanelBench& bench)
        : m_bench(bench)
    {
        for (values::ValueBase* const value : values::Tree::Instance()->ValuesBelow(QString())) {
            // First, so that a cause stands before its effects.
            value->MakeFirstObserver(this);
            m_values.push_back(std::make_unique<values::ValuePtr<values::ValueBase>>());
            m_values.back()->Assign(value);
        }
        take();
    }
    ~Journal() override
    {
        for (const auto& value : m_values) {
            if (*value)
                (*value)->RemoveObserver(this);
        }
    }

    void Update(Observable* source, TChangeCode code) override
    {
        notePublished();
        const auto* const value = dynamic_cast<values::ValueBase*>(source);
        const QString name = shortName(value->GetPathName());
        if (name == QLatin1String("P:DFLOCATE/ToDriver")) {
            if (code == ChangeExternal)
                m_lines << QStringLiteral("ToDriver=") + value->GetStringValue();
        } else if (code == ChangeContent) {
            m_lines << name + QLatin1Char('=') + value->GetStringValue();
        } else if (code == ChangeState) {
            m_lines << name + QStringLiteral(" state %1").arg(value->GetState());
        } else if (code == ChangeItems) {
            m_lines << name + QStringLiteral(" items");
        }
    }

    /// What was written since the last call.
    QStringList take()
    {
        notePublished();
        return std::exchange(m_lines, {});
    }

private:
    void notePublished()
    {
        const QString published = m_bench.parameterSet();
        if (std::exchange(m_published, published) != published)
            m_lines << QStringLiteral("set=") + published;
    }

    static QString shortName(QString path)
    {
        if (path.startsWith(parameterRoot))
            return path.replace(parameterRoot, QStringLiteral("P:"));
        return path.remove(handlerRoot)
            .replace(componentRoot, QStringLiteral("C:"))
            .replace(globalRoot, QStringLiteral("G:"));
    }

    const PanelBench& m_bench;
    std::vector<std::unique_ptr<values::ValuePtr<values::ValueBase>>> m_values;
    QStringList m_lines;
    QString m_published;
};

} // namespace testsupport
