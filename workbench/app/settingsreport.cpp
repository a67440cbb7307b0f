#include "app/settingsreport.h"

#include "app/session.h"

#include "valueframework/tree.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QComboBox>
#include <QToolBar>

namespace workbench {

namespace {

const values::ValueSelection* deviceList(const char* name)
{
    return dynamic_cast<values::ValueSelection*>(
        values::Tree::Instance()->FindValue(QStringLiteral("/GLOBAL/") + QLatin1String(name)));
}

QJsonValue currentNumber(const values::ValueSelection* selection)
{
    const values::SelectionItem* const item = selection != nullptr ? selection->GetCurrentItem() : nullptr;
    return item != nullptr ? QJsonValue(item->GetValue()) : QJsonValue();
}

QJsonValue currentText(const values::ValueSelection* selection)
{
    const values::SelectionItem* const item = selection != nullptr ? selection->GetCurrentItem() : nullptr;
    return item != nullptr ? QJsonValue(item->GetName()) : QJsonValue();
}

QJsonValue parameterText(const char* name)
{
    const auto* const value =
        dynamic_cast<values::StringValue*>(values::Tree::Instance()->FindValue(parameterRoot() + QLatin1String(name)));
    return value != nullptr && !value->GetValue().isEmpty() ? QJsonValue(value->GetValue()) : QJsonValue();
}

QJsonValue shownText(const QToolBar* toolBar, const char* comboName)
{
    const auto* const combo = toolBar != nullptr ? toolBar->findChild<QComboBox*>(QLatin1String(comboName)) : nullptr;
    return combo != nullptr ? QJsonValue(combo->currentText()) : QJsonValue();
}

QString modeText(DfMode mode)
{
    switch (mode) {
    case DfMode::Continuous:
        return QStringLiteral("continuous");
    case DfMode::Gated:
        return QStringLiteral("gated");
    case DfMode::Normal:
        break;
    }
    return QStringLiteral("normal");
}

QJsonValue orNull(const std::optional<int>& number)
{
    return number ? QJsonValue(*number) : QJsonValue();
}

QJsonValue measuredJson(const std::optional<DfRequest>& request)
{
    if (!request)
        return {};
    return QJsonObject{{QStringLiteral("frequency"), request->frequency},
                       {QStringLiteral("frequencyOffset"), request->frequencyOffset},
                       {QStringLiteral("bandwidth"), request->bandwidth},
                       {QStringLiteral("averaging"), request->averaging},
                       {QStringLiteral("mode"), modeText(request->mode)},
                       {QStringLiteral("qualityThreshold"), orNull(request->qualityThreshold)},
                       {QStringLiteral("levelThreshold"), orNull(request->levelThreshold)}};
}

} // namespace

QJsonObject settingsJson(const QToolBar* toolBar, const DfDriver& driver)
{
    const QJsonObject shown{{QStringLiteral("bandwidth"), shownText(toolBar, "DF Bandwidth")},
                            {QStringLiteral("averaging"), shownText(toolBar, "DF Averaging")},
                            {QStringLiteral("mode"), shownText(toolBar, "DF Mode")}};
    const QJsonObject device{{QStringLiteral("bandwidth"), currentNumber(deviceList("DeviceDfBandwidth"))},
                             {QStringLiteral("averaging"), currentNumber(deviceList("DeviceDfAveraging"))},
                             {QStringLiteral("mode"), currentText(deviceList("DeviceDfMode"))}};
    return {{QStringLiteral("toolBar"), shown},
            {QStringLiteral("device"), device},
            {QStringLiteral("toDriver"), parameterText("DFLOCATE/ToDriver")},
            {QStringLiteral("inDriver"), parameterText("DF_Settings")},
            {QStringLiteral("measured"), measuredJson(driver.publishedRequest())}};
}

} // namespace workbench
