#include "TessaraEngine/PointerHardwareTuning.h"

#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Platform/FileSystem.h"
#include "Platform/UserDefaults.h"
#include "Platform/WallClock.h"
#include "TessaraCore/Checked.h"

namespace tessara {
namespace {

/// -1.0 in 16.16 fixed point: the system leaves the motion as it is.
constexpr std::int64_t accelerationOff = -65536;
constexpr std::int64_t fixedOne = 65536;

/// How the words about a refused restore begin; a later success takes them back.
constexpr std::string_view refusedToPutBack = "macOS refused to put ";

/// No capture is anywhere near as large.
constexpr std::size_t maximumCaptureSize = 1 << 20;

bool wasTaken(std::optional<PointerPropertyWrite> write) {
    return write == PointerPropertyWrite::eventSystem ||
           write == PointerPropertyWrite::registryEntry;
}

}  // namespace

PointerHardwareTuning::PointerHardwareTuning(Environment environment,
                                             std::vector<HIDPPDeviceMatch> matches)
    : environment_(std::move(environment)), matches_(std::move(matches)) {
    status_.isSupported = environment_.backend.canWrite();
    status_.isEnabled = environment_.defaults.boolean(enabledKey).value_or(true);
    recoverStrandedCapture();
}

void PointerHardwareTuning::recoverStrandedCapture() {
    const auto stranded = loadCapture();
    if (!stranded) return;
    const auto failedKeys = writeBack(*stranded);
    status_.recoveredStrandedCapture = true;
    status_.lastRestoreReason = PointerTuningRestoreReason::strandedCaptureRecovered;
    readBack(*stranded);
    if (failedKeys.empty()) {
        forgetCapture();
        return;
    }
    status_.capture = stranded;
    status_.isApplied = true;
    status_.restoreFailed = true;
    status_.restoreFailedKeys = failedKeys;
    status_.lastError = fmt::format(
        "Tessara still had a correction applied from a previous run and could not put {} back "
        "yet. The saved originals have been kept and will be tried again.",
        fmt::join(failedKeys, " and "));
}

bool PointerHardwareTuning::shouldBeApplied() const {
    return status_.isSupported && status_.isEnabled && status_.isPermitted;
}

void PointerHardwareTuning::applyOrRestore() {
    if (shouldBeApplied()) {
        apply();
    } else if (status_.isApplied) {
        restore(PointerTuningRestoreReason::notRequested);
    }
}

void PointerHardwareTuning::request(const PointerTuningRequest& request) {
    lastRequest_.isPermitted = request.isPermitted;
    if (request.deviceDPI) lastRequest_.deviceDPI = request.deviceDPI;
    status_.isPermitted = request.isPermitted;
    applyOrRestore();
}

void PointerHardwareTuning::setEnabled(bool isEnabled) {
    if (isEnabled == status_.isEnabled) return;
    status_.isEnabled = isEnabled;
    environment_.defaults.set(enabledKey, isEnabled);
    if (isEnabled) {
        applyOrRestore();
    } else {
        restore(PointerTuningRestoreReason::switchedOff);
    }
}

void PointerHardwareTuning::deviceDPIReported(std::optional<std::int64_t> dpi) {
    if (!dpi || *dpi < 1) return;
    const bool isKnown = lastRequest_.deviceDPI == dpi;
    lastRequest_.deviceDPI = dpi;
    if (isKnown && shouldBeApplied() && status_.isApplied) return;
    applyOrRestore();
}

void PointerHardwareTuning::deviceBecameReady() {
    if (!shouldBeApplied()) {
        if (status_.isApplied) restore(PointerTuningRestoreReason::notRequested);
        return;
    }
    if (status_.capture && !isAttached(status_.capture->service)) {
        forgetCapture();
        status_.isApplied = false;
        status_.restoreFailed = false;
        status_.restoreFailedKeys.clear();
    }
    apply();
}

bool PointerHardwareTuning::isAttached(const PointerServiceIdentity& service) {
    return std::ranges::any_of(environment_.backend.services(), [&](const auto& present) {
        return present.registryID == service.registryID;
    });
}

void PointerHardwareTuning::apply() {
    const auto target = resolveTarget();
    if (!target) {
        if (status_.isApplied) restore(PointerTuningRestoreReason::targetDisappeared);
        status_.target.reset();
        status_.lastError = "no matching pointer collection is attached";
        return;
    }
    // There is one place for originals. Those of another mouse that is still there go back first.
    if (status_.capture && status_.capture->service.registryID != target->registryID &&
        isAttached(status_.capture->service)) {
        restore(PointerTuningRestoreReason::targetDisappeared);
        if (status_.capture) return;
    }
    status_.target = target;

    bool isFresh = false;
    if (!captureOriginals(*target, isFresh)) {
        status_.lastError = "could not save the original values to disk — nothing was written";
        return;
    }
    const PointerTuningCapture& capture = *status_.capture;
    // Of the captured one, also when the device has come to name another: that has no way back.
    const std::string& key = capture.accelerationKey;
    PointerPropertyBackend& backend = environment_.backend;

    status_.resolutionWrite = PointerPropertyWrite::skipped;
    status_.appliedResolution.reset();
    if (capture.resolution && lastRequest_.deviceDPI >= 1) {
        const std::int64_t figure = checkedMultiply(*lastRequest_.deviceDPI, fixedOne);
        status_.resolutionWrite =
            backend.writeNumber(PointerPropertyKey::resolution, figure, target->registryID);
        if (wasTaken(status_.resolutionWrite)) status_.appliedResolution = figure;
    }
    status_.accelerationWrite = PointerPropertyWrite::skipped;
    status_.appliedAcceleration.reset();
    if (capture.acceleration) {
        status_.accelerationWrite = backend.writeNumber(key, accelerationOff, target->registryID);
        if (wasTaken(status_.accelerationWrite)) status_.appliedAcceleration = accelerationOff;
    }
    status_.lastReadBackResolution =
        backend.readNumber(PointerPropertyKey::resolution, target->registryID);
    status_.lastReadBackAcceleration = backend.readNumber(key, target->registryID);

    status_.isApplied = wasTaken(status_.resolutionWrite) || wasTaken(status_.accelerationWrite);
    status_.lastRestoreReason.reset();
    status_.restoreFailed = false;
    status_.restoreFailedKeys.clear();
    if (status_.accelerationWrite == PointerPropertyWrite::refused) {
        status_.lastError = fmt::format("macOS refused to change {} on this device", key);
    } else if (!capture.acceleration) {
        status_.lastError = fmt::format(
            "this device carries no per-device {} to read, so Tessara left it alone — a value it "
            "cannot put back is a value it will not write",
            key);
    } else {
        status_.lastError.reset();
    }
    // With nothing changed there is nothing to put back.
    if (!status_.isApplied && isFresh) forgetCapture();
}

bool PointerHardwareTuning::captureOriginals(const PointerServiceIdentity& target, bool& isFresh) {
    // Corrected values must never be taken for the originals.
    if (status_.capture && status_.capture->service.registryID == target.registryID) return true;
    const PointerTuningCapture capture = readCapture(target);
    if (!persist(capture)) return false;
    status_.capture = capture;
    isFresh = true;
    return true;
}

void PointerHardwareTuning::restore(PointerTuningRestoreReason reason) {
    status_.lastRestoreReason = reason;
    const auto clearApplied = [this] {
        status_.isApplied = false;
        status_.appliedResolution.reset();
        status_.appliedAcceleration.reset();
        status_.resolutionWrite.reset();
        status_.accelerationWrite.reset();
        status_.restoreFailed = false;
        status_.restoreFailedKeys.clear();
    };
    if (!status_.capture) {
        clearApplied();
        return;
    }
    const auto failedKeys = writeBack(*status_.capture);
    readBack(*status_.capture);
    if (!failedKeys.empty()) {
        status_.restoreFailed = true;
        status_.restoreFailedKeys = failedKeys;
        status_.isApplied = true;
        status_.lastError = fmt::format(
            "{}{} back on this device. Tessara's values are still in force and the saved originals "
            "have been kept — they will be tried again, and on the next launch.",
            refusedToPutBack, fmt::join(failedKeys, " and "));
        return;
    }
    clearApplied();
    if (status_.lastError && status_.lastError->starts_with(refusedToPutBack)) {
        status_.lastError.reset();
    }
    forgetCapture();
}

std::optional<PointerServiceIdentity> PointerHardwareTuning::resolveTarget() {
    const auto candidates = candidateServices();
    const auto smallest =
        std::ranges::min_element(candidates, {}, &PointerServiceIdentity::registryID);
    return smallest == candidates.end() ? std::nullopt : std::optional(*smallest);
}

std::vector<PointerServiceIdentity> PointerHardwareTuning::candidateServices() {
    auto services = environment_.backend.services();
    std::erase_if(services, [&](const PointerServiceIdentity& service) {
        const auto isService = [&](const HIDPPDeviceMatch& match) {
            return service.matches(match);
        };
        return !service.isPointerCollection() || std::ranges::none_of(matches_, isService);
    });
    return services;
}

std::string PointerHardwareTuning::accelerationKey(const PointerServiceIdentity& service) {
    return environment_.backend.readString(PointerPropertyKey::accelerationType, service.registryID)
        .value_or(PointerPropertyKey::mouseAcceleration);
}

PointerTuningCapture PointerHardwareTuning::readCapture(const PointerServiceIdentity& service) {
    const std::string key = accelerationKey(service);
    PointerPropertyBackend& backend = environment_.backend;
    return {.service = service,
            .accelerationKey = key,
            .resolution = backend.readNumber(PointerPropertyKey::resolution, service.registryID),
            .acceleration = backend.readNumber(key, service.registryID),
            .capturedAt = environment_.wallClock.now()};
}

std::optional<PointerTuningCapture> PointerHardwareTuning::currentReading() {
    const auto target = resolveTarget();
    return target ? std::optional(readCapture(*target)) : std::nullopt;
}

void PointerHardwareTuning::refreshReading() {
    status_.currentReading = currentReading();
    status_.target =
        status_.currentReading ? std::optional(status_.currentReading->service) : std::nullopt;
}

std::pair<std::optional<std::int64_t>, std::optional<std::int64_t>>
PointerHardwareTuning::readBack() {
    const auto reading = currentReading();
    if (!reading) return {};
    return {reading->resolution, reading->acceleration};
}

void PointerHardwareTuning::readBack(const PointerTuningCapture& capture) {
    const std::uint64_t registryID = capture.service.registryID;
    status_.lastReadBackResolution =
        environment_.backend.readNumber(PointerPropertyKey::resolution, registryID);
    status_.lastReadBackAcceleration =
        environment_.backend.readNumber(capture.accelerationKey, registryID);
}

std::vector<std::string> PointerHardwareTuning::writeBack(const PointerTuningCapture& capture) {
    std::vector<std::string> failedKeys;
    const auto write = [&](const std::string& key, std::optional<std::int64_t> value) {
        if (!value) return;
        const auto outcome =
            environment_.backend.writeNumber(key, *value, capture.service.registryID);
        if (outcome == PointerPropertyWrite::refused) failedKeys.push_back(key);
    };
    write(PointerPropertyKey::resolution, capture.resolution);
    write(capture.accelerationKey, capture.acceleration);
    return failedKeys;
}

std::optional<PointerTuningCapture> PointerHardwareTuning::loadCapture() const {
    if (!environment_.capturePath) return std::nullopt;
    const auto bytes = environment_.files.read(*environment_.capturePath, maximumCaptureSize);
    return bytes ? PointerTuningCapture::decoded(*bytes) : std::nullopt;
}

bool PointerHardwareTuning::persist(const PointerTuningCapture& capture) {
    if (!environment_.capturePath) return false;
    const std::string& path = *environment_.capturePath;
    std::string reason;
    if (const auto bytes = capture.encoded(); !bytes) {
        reason = description(bytes.error());
    } else if (auto made = environment_.files.createFolders(folderOf(path)); !made) {
        reason = made.error().description;
    } else if (auto saved = environment_.files.replaceAtomically(path, *bytes); !saved) {
        reason = saved.error().description;
    } else {
        return true;
    }
    status_.lastError = fmt::format("could not save the original values: {}", reason);
    return false;
}

void PointerHardwareTuning::forgetCapture() {
    status_.capture.reset();
    if (environment_.capturePath) {
        static_cast<void>(environment_.files.remove(*environment_.capturePath));
    }
}

}  // namespace tessara
