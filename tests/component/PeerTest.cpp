// The base of a component and what it reads: the order of its operations, settings documents, data models, records.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

#include "component/TARNComponentBuilder.h"
#include "component/TARNProgressListener.h"
#include "platform/peer/QKPMMLExporter.h"
#include "platform/peer/QKSettingsFactory.h"
#include "support/QKVecValue.h"
#include "tests/component/HostedComponent.h"
#include "tests/component/SettingsText.h"

namespace component_test {

namespace {

using HxCppHelperV1::XMLDocument;
using HxCppHelperV1::XMLElement;

// ---- The order of the virtual operations ----

/// The place of a virtual operation in the table of its class, the destructor counted once. A pointer to a virtual
/// member holds the byte offset in the table plus one, and a destructor has two entries.
template <typename Member>
std::ptrdiff_t SlotOf(Member member) {
    std::ptrdiff_t offset = 0;
    std::memcpy(&offset, &member, sizeof offset);
    return (offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)) - 1;
}

TEST(Peer, OperationsStandInTheirOrder) {
    using Single = unsigned (QKPeer::*)(HXIterator*, HXProgress*, int*);
    using Several = unsigned (QKPeer::*)(const std::vector<HXIterator*>&, HXProgress*, int*);
    EXPECT_EQ(SlotOf(&QKPeer::Configure), 1);
    EXPECT_EQ(SlotOf(&QKPeer::GetDataModel), 2);
    EXPECT_EQ(SlotOf(&QKPeer::GetExecutionRequirements), 3);
    EXPECT_EQ(SlotOf(&QKPeer::GetInputIterator), 4);
    EXPECT_EQ(SlotOf(static_cast<Several>(&QKPeer::BeginExecution)), 5);
    EXPECT_EQ(SlotOf(static_cast<Single>(&QKPeer::BeginExecution)), 6);
    EXPECT_EQ(SlotOf(&QKPeer::EndExecution), 7);
    EXPECT_EQ(SlotOf(&QKPeer::CancelExecution), 8);
    EXPECT_EQ(SlotOf(&QKPeer::NextRecord), 9);
    EXPECT_EQ(SlotOf(&QKPeer::GetRecordValue), 10);
    EXPECT_EQ(SlotOf(&QKPeer::GetErrorDetail), 11);
    EXPECT_EQ(SlotOf(&QKPeer::GetPSMControlInformation), 12);
    EXPECT_EQ(SlotOf(&QKPeer::PSMMerge), 13);
    EXPECT_EQ(SlotOf(&QKPeer::GetWorkerTask), 14);
    EXPECT_EQ(SlotOf(&QKPeer::GetWorkerDataModel), 15);
    EXPECT_EQ(SlotOf(&QKPeer::GetWorkerIterator), 16);
    EXPECT_EQ(SlotOf(&QKPeer::ReadWorkerInputContainer), 17);
    EXPECT_EQ(SlotOf(&QKPeer::FollowOnTaskStartExe), 18);
    EXPECT_EQ(SlotOf(&QKPeer::FollowOnTaskEndExe), 19);
    EXPECT_EQ(SlotOf(&QKPeer::GetIteratorRequirements), 20);
    EXPECT_EQ(SlotOf(&QKPeer::GetInputFieldsFixed), 21);
    EXPECT_EQ(SlotOf(&QKPeer::GetRecordSynchronizedProcessing), 22);
    EXPECT_EQ(SlotOf(&QKPeer::GetWorkerTaskNumber), 23);
    EXPECT_EQ(SlotOf(&QKPeer::MakeSettings), 24);
}

TEST(Peer, TakesNoPartInDividedWork) {
    TARNComponentBuilder builder(nullptr, nullptr);
    int error = 0;
    EXPECT_EQ(builder.BeginExecution(std::vector<HXIterator*>(), nullptr, &error), HX_NOT_SUPPORTED);
    EXPECT_EQ(builder.PSMMerge(&error), HX_NOT_SUPPORTED);
    EXPECT_EQ(builder.GetWorkerTaskNumber(&error), HX_NOT_SUPPORTED);
}

TEST(Peer, AForeignReportIsNoProgressOfTheEngine) {
    struct Foreign : ProgressReport {
        int DiscreteMeasure(const std::string&) override { return 0; }
        double ScaleMeasure(const std::string&) override { return 0; }
    };
    TARNComponentBuilder builder(nullptr, nullptr);
    TARNProgressListener listener(builder);
    Foreign report;
    EXPECT_THROW(listener.OnProgress(report), std::bad_cast);
}

// ---- Settings ----

QKSettings Reread(const QKSettings& settings) {
    QKSettings read;
    int error = 0;
    const XMLDocument document = XMLDocument::FromText(SettingsText(settings));
    EXPECT_EQ(QKSettingsFactory::MakeModelSettings(document, read, &error), HX_OK);
    return read;
}

/// Texts of what XML can hold, blanks and signs included.
rc::Gen<std::string> Texts() {
    return rc::gen::container<std::string>(rc::gen::element('a', 'B', ';', ' ', '\t', '\n', '\r', '<', '&', '"', '\''));
}

rc::Gen<double> Doubles() {
    return rc::gen::map(rc::gen::arbitrary<std::int64_t>(), [](std::int64_t bits) {
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        return std::isnan(number) ? std::copysign(0.0, number) : number;
    });
}

QKSettings AnySettings(int depth) {
    QKSettings settings;
    const int size = *rc::gen::inRange(0, 5);
    for (int i = 0; i < size; ++i) {
        const std::string name = *Texts();
        switch (*rc::gen::inRange(0, depth > 0 ? 9 : 7)) {
            case 0:
                settings.AddSetting(name, *Texts());
                break;
            case 1:
                settings.AddSetting(name, *Doubles());
                break;
            case 2:
                settings.AddSetting(name, *rc::gen::arbitrary<int>());
                break;
            case 3:
                settings.AddSetting(name, *rc::gen::arbitrary<bool>());
                break;
            case 4:
                AddVecSetting(settings, name, *rc::gen::container<std::vector<std::string>>(Texts()), false);
                break;
            case 5:
                AddVecSetting(settings, name, *rc::gen::container<std::vector<double>>(Doubles()), false);
                break;
            case 6:
                AddVecSetting(settings, name, *rc::gen::arbitrary<std::vector<int>>(), false);
                break;
            case 7:
                settings.AddSetting(name, AnySettings(depth - 1));
                break;
            default:
                AddVecSetting(settings, name, std::vector<QKSettings>{AnySettings(depth - 1), AnySettings(depth - 1)},
                              false);
        }
    }
    return settings;
}

TEST(SettingsDocument, LosesNothing) {
    EXPECT_TRUE(rc::check("settings come back as they were", [] {
        const QKSettings settings = AnySettings(3);
        const QKSettings read = Reread(settings);
        RC_ASSERT(read == settings);
        RC_ASSERT(SettingsText(read) == SettingsText(settings));
    }));
}

TEST(SettingsDocument, KeepsTypesAndRepeatedNames) {
    QKSettings settings;
    settings.AddNewSetting("id", 5, "a type");
    settings.AddSetting("id", "second");
    const QKSettings read = Reread(settings);
    ASSERT_EQ(read.Size(), 2u);
    EXPECT_EQ(read.GetSettingAt(0).GetType(), "a type");
    EXPECT_EQ(read.GetSettingAt(1).GetValue().ToString(), "second");
}

TEST(SettingsDocument, ReadsNumbersThatAreNone) {
    QKSettings read;
    int error = 0;
    const XMLDocument document = XMLDocument::FromText(
        "<Settings><Setting name='v' kind='doubleVector'><Element value='nan'/><Element value='inf'/>"
        "<Element value='-inf'/></Setting></Settings>");
    ASSERT_EQ(QKSettingsFactory::MakeModelSettings(document, read, &error), HX_OK);
    std::vector<double> values;
    ASSERT_TRUE(read.GetSettingValByName("v", values));
    ASSERT_EQ(values.size(), 3u);
    EXPECT_TRUE(std::isnan(values[0]));
    EXPECT_EQ(values[1], HUGE_VAL);
    EXPECT_EQ(values[2], -HUGE_VAL);
}

TEST(SettingsDocument, NestingHasALimit) {
    std::string text;
    for (int i = 0; i < 100000; ++i) text += "<Setting name='a' kind='list'>";
    for (int i = 0; i < 100000; ++i) text += "</Setting>";
    QKSettings read;
    int error = 0;
    const XMLDocument document = XMLDocument::FromText("<Settings>" + text + "</Settings>");
    EXPECT_EQ(QKSettingsFactory::MakeModelSettings(document, read, &error), HX_FAILED);
    EXPECT_EQ(error, HX_ERROR_SETTINGS);
}

// ---- Data models ----

class Model : public testing::Test {
 protected:
    bool Build(const std::string& fields, bool withoutLabels = false, bool withoutOrder = false,
               bool withoutDates = false, bool withWeight = true, bool withCounts = true) {
        parser = std::make_unique<DataModelParser>(
            XMLDocument::FromText("<DataModel totalCount='7'>" + fields + "</DataModel>"));
        adapter = std::make_unique<InputAdapter>(nullptr, *parser, withoutLabels, withoutOrder, withoutDates,
                                                 withWeight, withCounts);
        int error = 0;
        return adapter->BuildVarlist(&error);
    }
    const IQKVariable& Field(int index) const { return *adapter->GetVarList().GetVarAt(index); }

    std::unique_ptr<DataModelParser> parser;
    std::unique_ptr<InputAdapter> adapter;
};

constexpr const char* kAllFields =
    "<Field name='x' label='An x' storage='number' level='continuous' dateType='dateTime' role='frequencyWeight'/>"
    "<Field name='g' label='A g' storage='number' level='ordinal'><Category value='2' label='two'/>"
    "<Category value='1e1'/></Field>"
    "<Field name='s' storage='string' level='nominal'><Category value='' label='none'/></Field>"
    "<Field name='o' storage='string' level='other'/>";

TEST_F(Model, DescribesEachKindOfField) {
    ASSERT_TRUE(Build(kAllFields));
    ASSERT_EQ(adapter->GetVarList().Size(), 4);
    EXPECT_EQ(Field(0).GetKind(), FieldKind::kContinuous);
    EXPECT_EQ(Field(0).GetLabel(), "An x");
    EXPECT_EQ(Field(0).GetDateType(), DateType::kDateTime);
    EXPECT_EQ(Field(1).GetKind(), FieldKind::kNumericCategories);
    EXPECT_TRUE(dynamic_cast<const QKCatVar&>(Field(1)).GetOrdinalFlag());
    EXPECT_EQ(Field(1).GetCategoryValue(1), 10.0);
    EXPECT_EQ(Field(1).GetCategoryLabel(0), "two");
    EXPECT_EQ(Field(2).GetKind(), FieldKind::kStringCategories);
    EXPECT_FALSE(dynamic_cast<const QKCatVar&>(Field(2)).GetOrdinalFlag());
    EXPECT_EQ(Field(2).GetCategoryCount(), 1);
    EXPECT_EQ(Field(3).GetKind(), FieldKind::kOther);
    EXPECT_EQ(adapter->GetVarList().GetFreqWeightIndex(), 0);
    EXPECT_EQ(adapter->GetVarList().GetUnWeightedCount(), 7u);
}

TEST_F(Model, LeavesOutWhatItIsToldTo) {
    ASSERT_TRUE(Build(kAllFields, true, true, true, false, false));
    EXPECT_EQ(Field(0).GetLabel(), "");
    EXPECT_EQ(Field(1).GetCategoryLabel(0), "");
    EXPECT_FALSE(dynamic_cast<const QKCatVar&>(Field(1)).GetOrdinalFlag());
    EXPECT_EQ(Field(0).GetDateType(), DateType::kNone);
    EXPECT_EQ(adapter->GetVarList().GetFreqWeightIndex(), QKVarList::kNoWeight);
    EXPECT_EQ(adapter->GetVarList().GetUnWeightedCount(), 0u);
}

// ---- Export ----

TEST(PmmlExport, WritesNothingForAnIndexInNoFieldsPlaceOrWhenCancelled) {
    struct Stop : QKQueryCancel {
        bool IsCancelled() override { return true; }
    };
    QKVarList fields;
    fields.AddNewVar(std::make_shared<QKContVar>("x", ""));
    std::ostringstream stream;
    QKPMMLExporter exporter(nullptr);
    EXPECT_EQ(exporter.ExportDataModel(fields, {1}, ExportFormat::kCompact, &stream), nullptr);
    EXPECT_TRUE(exporter.GetStatus().IsError());
    EXPECT_EQ(exporter.ExportDataModel(fields, {0}, ExportFormat::kCompact, &stream), &stream);
    EXPECT_TRUE(exporter.GetStatus().IsOK());
    Stop stop;
    EXPECT_EQ(QKPMMLExporter(&stop).ExportDataModel(fields, {0}, ExportFormat::kCompact, &stream), nullptr);
}

// ---- XML ----

TEST(HelperXml, WhatXmlCantHoldBecomesTheReplacementCharacter) {
    XMLDocument document = XMLDocument::WithRoot("r");
    document.getRoot().addAttribute("a", std::string("x\x01y\xFF", 4));
    EXPECT_EQ(document.getRoot().getAttribute("a"), "x\xEF\xBF\xBDy\xEF\xBF\xBD");
}

TEST(HelperXml, AnElementThatIsNotValidIsQuiet) {
    XMLElement none;
    none.addAttribute("a", "b");
    EXPECT_FALSE(none.addChild("c").isValid());
    EXPECT_FALSE(none.findChild("c").isValid());
    EXPECT_EQ(none.getName() + none.getAttribute("a"), "");
}

}  // namespace

}  // namespace component_test
