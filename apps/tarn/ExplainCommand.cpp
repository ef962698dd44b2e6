#include "apps/tarn/ExplainCommand.h"

#include "host/report/Explanation.h"

namespace tarn {

ExitStatus ExplainTopic(const std::string& topic) {
    PrintResult(Explanation(topic, Texts()));
    return ExitStatus::kDone;
}

}  // namespace tarn
