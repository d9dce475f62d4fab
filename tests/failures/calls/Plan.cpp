#include "failures/calls/Plan.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>

namespace valdorn::failing {

namespace {

std::atomic<bool> isArmed = false;
thread_local int quietScopes = 0;

const void* codeBegin = nullptr;
const void* codeEnd = reinterpret_cast<const void*>(~std::uintptr_t{0});

std::array<Fault, maxFaults> planned{};
std::size_t plannedCount = 0;
unsigned* report = nullptr;
std::array<std::atomic<bool>, maxFaults> fired{};
std::array<std::atomic<unsigned>, maxFaults> lastCut{};
std::array<std::atomic<unsigned>, callCount> made{};

bool isDue(const Fault& fault, unsigned nth) {
    return nth == fault.nth || (fault.isRepeated && nth > fault.nth && (nth - fault.nth) % 2 == 0);
}

// The rest of what was cut is refused, and that may be tried once only.
Verdict judge(std::size_t index, unsigned nth) {
    const Fault& fault = planned[index];
    if (fault.failure.manner == Manner::cut && fired[index] && nth == lastCut[index] + 1)
        return {true, {Manner::refuse, fault.failure.error, false}};
    if (!isDue(fault, nth))
        return {};
    fired[index] = true;
    if (report != nullptr)
        report[callCount] = fired[0] ? 1 : 0;
    lastCut[index] = nth;
    return {true, fault.failure};
}

}  // namespace

void arm(const Fault* faults, std::size_t count) {
    plannedCount = count;
    for (std::size_t index = 0; index < count; ++index)
        planned[index] = faults[index];
    for (auto& one : fired)
        one = false;
    for (auto& one : made)
        one = 0;
    isArmed = true;
}

void lookOnlyAt(const void* begin, const void* end) {
    codeBegin = begin;
    codeEnd = end;
}

void disarm() {
    isArmed = false;
}

unsigned timesMade(Call call) {
    return made[static_cast<std::size_t>(call)];
}

bool hasFired(std::size_t fault) {
    return fired[fault];
}

void reportIn(unsigned* numbers) {
    report = numbers;
}

bool isLookedAt() {
    return isArmed && quietScopes == 0;
}

Verdict consult(Call call, const void* caller) {
    if (!isLookedAt() || std::less()(caller, codeBegin) || !std::less()(caller, codeEnd))
        return {};
    const unsigned nth = ++made[static_cast<std::size_t>(call)];
    if (report != nullptr)
        report[static_cast<std::size_t>(call)] = nth;
    for (std::size_t index = 0; index < plannedCount; ++index) {
        if (planned[index].call != call)
            continue;
        const Verdict verdict = judge(index, nth);
        if (verdict.fails)
            return verdict;
    }
    return {};
}

Quiet::Quiet() {
    ++quietScopes;
}

Quiet::~Quiet() {
    --quietScopes;
}

}  // namespace valdorn::failing
