#include "tests/host/engine/ReadKeys.h"

#include <vector>

namespace read_keys {

std::map<std::string, Keys>& All() {
    static std::map<std::string, Keys> all;
    return all;
}

namespace {

void Note(const QKSettings& settings, const std::string& key, tarn::KeyShape shape) {
    const QKSetting* const watched = settings.FindSetting(kWatched);
    if (watched != nullptr && key != kWatched) All()[watched->GetValue().ToString()][key].insert(shape);
}

}  // namespace

// The linker calls what a call of the function has come to `__wrap_` and the function itself `__real_`, both before its
// name in the binary interface. A function of a class takes its object as the first argument there.
#define READ_SYMBOL(out) \
    "_ZNK10QKSettings19GetSettingValByNameERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE" out
#define WATCH(Type, name, symbol, shape)                                                                     \
    bool Really##name(const QKSettings* settings, const std::string& key, Type& out) asm("__real_" symbol);  \
    bool Watched##name(const QKSettings* settings, const std::string& key, Type& out) asm("__wrap_" symbol); \
    bool Watched##name(const QKSettings* settings, const std::string& key, Type& out) {                      \
        Note(*settings, key, shape);                                                                         \
        return Really##name(settings, key, out);                                                             \
    }

using tarn::KeyShape;
WATCH(std::string, Text, READ_SYMBOL("RS5_"), KeyShape::kText)
WATCH(double, Double, READ_SYMBOL("Rd"), KeyShape::kNumber)
WATCH(int, Int, READ_SYMBOL("Ri"), KeyShape::kNumber)
WATCH(bool, Flag, READ_SYMBOL("Rb"), KeyShape::kFlag)
WATCH(QKSettings, Object, READ_SYMBOL("RS_"), KeyShape::kObject)
WATCH(std::vector<std::string>, Texts, READ_SYMBOL("RSt6vectorIS5_SaIS5_EE"), KeyShape::kList)
WATCH(std::vector<double>, Doubles, READ_SYMBOL("RSt6vectorIdSaIdEE"), KeyShape::kList)
WATCH(std::vector<int>, Ints, READ_SYMBOL("RSt6vectorIiSaIiEE"), KeyShape::kList)
WATCH(std::vector<QKSettings>, Objects, READ_SYMBOL("RSt6vectorIS_SaIS_EE"), KeyShape::kObjects)

}  // namespace read_keys
