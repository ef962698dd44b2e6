// Any bytes are either a descriptor, which a small table is then read by, or an input error.

#include <cstddef>
#include <cstdint>
#include <string>

#include "host/InputError.h"
#include "host/table/FieldDescriptor.h"
#include "host/table/TableLoader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    tarn::ByteSource source = tarn::ByteSource::FromMemory("fields.json", text);
    try {
        const tarn::TableDescriptor descriptor = tarn::ReadTableDescriptor(source);
        for (const bool excludeUserMissing : {false, true}) {
            tarn::ByteSource table =
                tarn::ByteSource::FromMemory("data.csv", "a,b,c\n1,x,\n2.5,1,true\n-0,9,2020-01-01\n");
            tarn::LoadOptions options;
            options.excludeUserMissing = excludeUserMissing;
            options.threads = 1;  // what takes the time would be to start others
            tarn::LoadTable(table, descriptor, options);
        }
    } catch (const tarn::InputError&) {
        // The other good end.
    }
    return 0;
}
