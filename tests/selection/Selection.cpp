#include "tests/selection/Selection.h"

#include <gtest/gtest.h>

#include "platform/common/QKMV.h"
#include "platform/common/QKXML.h"
#include "selection/TARNSettingsExpansion.h"
#include "support/QKVecValue.h"

namespace selection {

namespace {

std::string NumberText(double number) {
    return QKMV::IsMissing(number) ? "missing" : QKXML::ReplaceSep(number, "%.15g");
}

std::string Joined(const Lines& parts) {
    std::string joined;
    for (std::size_t i = 0; i < parts.size(); ++i) joined += (i == 0 ? "" : ", ") + parts[i];
    return joined;
}

std::string VectorText(const QKSettings& settings, const QKSetting& setting) {
    Lines parts;
    switch (static_cast<SettingElementKind>(setting.GetValue().GetElementKind())) {
        case SettingElementKind::kSettings: {
            Lists lists;
            settings.GetSettingValByName(setting.GetName(), lists);
            for (const QKSettings& list : lists) parts.push_back("{" + Describe(list) + "}");
            break;
        }
        case SettingElementKind::kString: {
            Names texts;
            settings.GetSettingValByName(setting.GetName(), texts);
            for (const std::string& text : texts) parts.push_back("'" + text + "'");
            break;
        }
        default:
            parts.push_back("a vector of another kind");
    }
    return "[" + Joined(parts) + "]";
}

std::string ScalarText(const IQKSettingValue& value) {
    switch (static_cast<SettingElementKind>(value.GetElementKind())) {
        case SettingElementKind::kString:
            return "'" + value.ToString() + "'";
        case SettingElementKind::kDouble:
            return NumberText(value.GetNumber());
        case SettingElementKind::kInt:
            return "int " + value.ToString();
        default:
            return "bool " + value.ToString();
    }
}

std::string ValueText(const QKSettings& settings, const QKSetting& setting) {
    switch (static_cast<SettingKind>(setting.GetValue().GetKind())) {
        case SettingKind::kScalar:
            return ScalarText(setting.GetValue());
        case SettingKind::kVector:
            return VectorText(settings, setting);
        default:
            return "{" + Describe(dynamic_cast<const QKSettingListValue&>(setting.GetValue()).GetListValue()) + "}";
    }
}

bool IsEntry(const QKSetting& setting) {
    return setting.GetValue().GetKind() == static_cast<int>(SettingKind::kNestedList);
}

const QKSettings& ListOf(const QKSetting& setting) {
    return dynamic_cast<const QKSettingListValue&>(setting.GetValue()).GetListValue();
}

}  // namespace

QKSettings Tree(const std::vector<Item>& items) {
    QKSettings settings;
    for (const Item& item : items) {
        if (const auto* names = std::get_if<Names>(&item.value)) {
            AddVecSetting(settings, item.key, *names, false);
        } else if (const auto* lists = std::get_if<Lists>(&item.value)) {
            AddVecSetting(settings, item.key, *lists, false);
        } else if (const auto* text = std::get_if<std::string>(&item.value)) {
            settings.AddSetting(item.key, *text);
        } else if (const auto* number = std::get_if<double>(&item.value)) {
            settings.AddSetting(item.key, *number);
        } else if (const auto* whole = std::get_if<int>(&item.value)) {
            settings.AddSetting(item.key, *whole);
        } else if (const auto* truth = std::get_if<bool>(&item.value)) {
            settings.AddSetting(item.key, *truth);
        } else {
            settings.AddSetting(item.key, std::get<QKSettings>(item.value));
        }
    }
    return settings;
}

Item Selected(const std::string& test, std::vector<Item> keys) {
    keys.insert(keys.begin(), Item{"isSelected", true});
    return {test, Tree(keys)};
}

Item NotSelected(const std::string& test) {
    return {test, Tree({{"isSelected", false}})};
}

std::string Describe(const QKSettings& settings) {
    Lines parts;
    for (std::size_t i = 0; i < settings.Size(); ++i) {
        const QKSetting& setting = settings.GetSettingAt(i);
        EXPECT_EQ(setting.GetType(), "") << setting.GetName();
        parts.push_back(setting.GetName() + " " + ValueText(settings, setting));
    }
    return Joined(parts);
}

Lines Expanded::Plan() const {
    Lines plan;
    for (std::size_t i = 0; i < settings.Size(); ++i) {
        const QKSetting& setting = settings.GetSettingAt(i);
        if (!IsEntry(setting)) continue;
        std::string name;
        Names names;
        if (ListOf(setting).GetSettingValByName("variableName", name)) names = {name};
        ListOf(setting).GetSettingValByName("variableName", names);
        plan.push_back(setting.GetName() + " " + Joined(names));
    }
    return plan;
}

Expanded Expand(const QKSettings& request, harness::Fields& fields, const Renamed& renamed) {
    Expanded result;
    TARNSettingsExpansion expansion(&request, &fields.List(), &result.settings, &renamed);
    result.status = expansion.Expand();

    QKSettings globals;
    for (std::size_t i = 0; i < result.settings.Size(); ++i) {
        const QKSetting& setting = result.settings.GetSettingAt(i);
        EXPECT_EQ(setting.GetType(), "") << setting.GetName();
        if (IsEntry(setting)) {
            result.entries.push_back(setting.GetName() + ": " + Describe(ListOf(setting)));
        } else {
            globals.AddSetting(setting);
        }
    }
    result.globals = Describe(globals);

    EXPECT_EQ(expansion.warningCodes.size(), expansion.warningArguments.size());
    for (std::size_t i = 0; i < expansion.warningCodes.size(); ++i) {
        EXPECT_TRUE(expansion.warningCodes[i].IsWarning());
        std::string line = std::to_string(expansion.warningCodes[i].GetErrorCode());
        for (const std::string& argument : expansion.warningArguments[i]) line += " [" + argument + "]";
        result.warnings.push_back(line);
    }
    return result;
}

}  // namespace selection
