// For a program that the library is put before from outside (LD_PRELOAD). The environment says what
// fails there:
//   VALDORN_FAILING_PROGRAM  whose calls: this executable's, in its own code. Its children, which
//                            inherit all this, are left alone
//   VALDORN_FAILING_CALL     NAME NTH MANNER ERRNO, the manner as a number; or nothing to fail
//   VALDORN_FAILING_REPORT   a file that is to hold at any time how often each call was made, in
//                            the order of their names, and then whether it has failed: 32 bits each

#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include "failures/calls/Plan.h"

namespace valdorn::failing {

namespace {

bool isMeant() {
    const char* const program = getenv("VALDORN_FAILING_PROGRAM");
    std::array<char, PATH_MAX> own{};
    return program != nullptr && readlink("/proc/self/exe", own.data(), own.size() - 1) > 0 &&
           strcmp(program, own.data()) == 0;
}

// The first object is the program itself.
int lookAtCode(dl_phdr_info* object, size_t, void*) {
    for (int at = 0; at < object->dlpi_phnum; ++at) {
        const auto& segment = object->dlpi_phdr[at];
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0)
            continue;
        const char* const begin =
            reinterpret_cast<const char*>(object->dlpi_addr + segment.p_vaddr);
        lookOnlyAt(begin, begin + segment.p_memsz);
    }
    return 1;
}

void reportTo(const char* path) {
    constexpr size_t bytes = (callCount + 1) * sizeof(unsigned);
    const int file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0 || ftruncate(file, bytes) != 0)
        abort();
    void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED)
        abort();
    reportIn(static_cast<unsigned*>(memory));
    close(file);
}

Fault faultIn(const char* text) {
    std::array<char, 64> name{};
    unsigned nth = 0;
    int manner = 0;
    int error = 0;
    if (sscanf(text, "%63s %u %d %d", name.data(), &nth, &manner, &error) != 4)
        abort();
    for (size_t at = 0; at < callCount; ++at) {
        if (strcmp(kindOf(static_cast<Call>(at)).name, name.data()) == 0)
            return {static_cast<Call>(at), nth, {static_cast<Manner>(manner), error, false}};
    }
    abort();
}

[[gnu::constructor]] void start() {
    if (!isMeant())
        return;
    dl_iterate_phdr(lookAtCode, nullptr);
    reportTo(getenv("VALDORN_FAILING_REPORT"));
    const char* const call = getenv("VALDORN_FAILING_CALL");
    if (call == nullptr)
        return arm(nullptr, 0);
    const Fault fault = faultIn(call);
    arm(&fault, 1);
}

}  // namespace

}  // namespace valdorn::failing

// The name of a call, by its place in the report; nothing behind the last one.
extern "C" const char* failingCallName(int place) {
    using namespace valdorn::failing;
    return static_cast<size_t>(place) < callCount ? kindOf(static_cast<Call>(place)).name : nullptr;
}
