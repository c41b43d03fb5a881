// Whatever bytes stand in a recording, reading them ends in inputs whose times never go back, or in
// an error with words.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Dispatch/Clock.h"
#include "TessaraCore/Precondition.h"
#include "TessaraReplay/FrameAssembler.h"
#include "TessaraReplay/Recording.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessara;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto recording = parseRecording(text, "fuzzed");
    if (!recording) {
        TESSARA_PRECONDITION(!recording.error().description().empty(), "an error without words");
        return 0;
    }
    TESSARA_PRECONDITION(!recording->events.empty(), "a recording without events was read");
    const ReplayInputs inputs = assembleInputs(*recording);
    TimePoint last = replayStart;
    for (const ReplayInput& input : inputs.inputs) {
        TESSARA_PRECONDITION(input.at >= last, "an input lies before an earlier one");
        last = input.at;
    }
    TESSARA_PRECONDITION(inputs.end >= last, "the recording ends before its last input");
    return 0;
}
