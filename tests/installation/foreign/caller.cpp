// A caller in C++ outside of the house: the sign test of main.c by the engine's own classes.

#include <cstddef>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "catalogue/TARNFactory.h"
#include "planning/TARNReporter.h"
#include "platform/common/QKSettings.h"
#include "platform/common/QKVarList.h"
#include "support/QKVecValue.h"

namespace {

class FourRecords : public MultiPassRecordIter {
 public:
    bool HasMore() override { return next_ < 4; }
    Record* Next() override {
        current_ = Record::View(values_[next_++], 2);
        return &current_;
    }
    int GetState() override { return HasMore() ? 0 : 1; }
    int Rewind() override {
        next_ = 0;
        return 0;
    }

 private:
    double values_[4][2] = {{1, 2}, {2, 4}, {3, 2}, {4, 4}};
    std::size_t next_ = 0;
    Record current_;
};

class Listener : public ProgressListener {
 public:
    void OnProgress(ProgressReport& report) override {
        const auto* reporter = dynamic_cast<TARNReporter*>(&report);
        wasTold = reporter != nullptr && reporter->GetCurrentStepNum() > 0;
    }
    bool wasTold = false;
};

int Fail(const QKStatus& status) {
    std::cerr << "code " << status.GetErrorCode() << "\n";
    return 1;
}

}  // namespace

int main() {
    QKVarList fields;
    fields.AddNewVar(std::make_shared<QKContVar>("before", ""));
    fields.AddNewVar(std::make_shared<QKContVar>("after", ""));

    QKSettings entry;
    AddVecSetting(entry, "variableName", std::vector<std::string>{"before", "after"}, false);
    QKSettings settings;
    settings.AddSetting("RSign", entry);

    TARNFactory factory;
    const std::unique_ptr<IQKAlgorithm> algorithm(factory.CreateQKAlgorithm(settings, fields));
    if (algorithm == nullptr) return Fail(factory.GetStatus());
    Listener progress;
    algorithm->SetProgressListener(&progress);
    FourRecords records;
    if (const QKStatus status = algorithm->Run(records); status.IsError()) return Fail(status);
    if (const QKStatus status = algorithm->WriteResults(std::cout, {"foreign", "", ""}); status.IsError()) {
        return Fail(status);
    }
    if (!progress.wasTold) std::cerr << "the engine's reports are of another class\n";
    return progress.wasTold ? 0 : 1;
}
