// The program: hands over what was typed, and says what went wrong.

#include <exception>
#include <new>

#include "apps/tarn/Command.h"
#include "apps/tarn/CommandLine.h"
#include "apps/tarn/LastResort.h"
#include "host/InputError.h"

int main(int argc, char** argv) {
    using tarn::ExitStatus;
    tarn::PrepareForSignals();
    ExitStatus status = ExitStatus::kRunFailed;
    try {
        status = tarn::RunCommandLine(argc, argv);
    } catch (const tarn::InputError& error) {
        status = tarn::TellMistake(error.what(), ExitStatus::kWrongUsage);
    } catch (const std::bad_alloc&) {
        tarn::EndWithoutMemory();
    } catch (const std::exception& error) {
        status = tarn::TellMistake(error.what(), ExitStatus::kRunFailed);
    }
    return static_cast<int>(status);
}
