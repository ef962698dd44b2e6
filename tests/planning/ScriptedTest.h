#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "contract/TARNTest.h"

/// A test that answers by a script and notes every call. A call is named in short, with the number of the pass that
/// the test itself has counted: "results", "begin1", "used1", "rec1:20" (20 is the value of field 0), "end1",
/// "again1" (the first time that it is asked), "element". The log has the test's name in front: "a begin1".
struct Script {
    std::string name = "a";
    std::vector<int> used = {0};
    /// What a call returns; OK where nothing is said.
    std::map<std::string, QKStatus> answers = {};
    /// The askings that are answered by yes.
    std::set<std::string> yes = {};
    /// What "begin" and "end" calls set the passes that remain to.
    std::map<std::string, int> remaining = {};
    /// The calls that run out of memory.
    std::set<std::string> outOfMemory = {};
    /// Is told of every call before anything else.
    std::function<void(const std::string&)> onCall = {};
};

using CallLog = std::vector<std::string>;

class ScriptedTest : public TARNTest {
 public:
    ScriptedTest(Script script, CallLog& log)
        : TARNTest(std::make_unique<QKSettings>()), script_(std::move(script)), log_(&log) {}

    void SetUnivariateResults(UnivariateResults*) override { Note("results"); }
    QKStatus BeginPass() override {
        ++pass_;
        return Answer("begin" + std::to_string(pass_));
    }
    void GetUsedVariables(std::vector<int>& fieldIndices) override {
        Note("used" + std::to_string(pass_));
        EXPECT_TRUE(fieldIndices.empty()) << "the list of an earlier pass was kept";
        fieldIndices.insert(fieldIndices.end(), script_.used.begin(), script_.used.end());
    }
    QKStatus ProcessRecord(Record& record) override {
        return Answer("rec" + std::to_string(pass_) + ":" + std::to_string(static_cast<int>(record[0])));
    }
    QKStatus EndPass() override { return Answer("end" + std::to_string(pass_)); }
    bool NeedsAnotherPass() override {
        ++asked_;
        const std::string call = "again" + std::to_string(asked_);
        Note(call);
        return script_.yes.contains(call);
    }
    QKXML::XMLElement* MakeResultElement() override {
        Note("element");
        return QKXML::XMLElement::Create(script_.name).release();
    }

 private:
    void Note(const std::string& call) {
        if (script_.onCall) script_.onCall(call);
        log_->push_back(script_.name + " " + call);
        if (script_.outOfMemory.contains(call)) throw std::bad_alloc();
        if (const auto left = script_.remaining.find(call); left != script_.remaining.end()) {
            passesRemaining = left->second;
        }
    }
    QKStatus Answer(const std::string& call) {
        Note(call);
        const auto answer = script_.answers.find(call);
        return answer == script_.answers.end() ? QKStatus() : answer->second;
    }

    Script script_;
    CallLog* log_;
    int pass_ = 0;
    int asked_ = 0;
};

/// Notes the step numbers that it is told.
class StepListener : public ProgressListener {
 public:
    void OnProgress(ProgressReport& report) override;
    std::vector<int> steps;
};

/// Says yes from the `from`th question on (counted from 1; 0 is never), and tells of its first yes.
class CancelAtPoll : public QKQueryCancel {
 public:
    explicit CancelAtPoll(int from, std::function<void()> atFirstYes = {})
        : from_(from), atFirstYes_(std::move(atFirstYes)) {}
    bool IsCancelled() override {
        ++polls;
        const bool cancelled = from_ > 0 && polls >= from_;
        if (cancelled && polls == from_ && atFirstYes_) atFirstYes_();
        return cancelled;
    }
    int polls = 0;

 private:
    int from_;
    std::function<void()> atFirstYes_;
};
