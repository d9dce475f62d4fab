"""No call escapes the sweep: whatever the product asks of the C library can fail on demand, or is
known to need no failure."""

import os
import subprocess
import unittest

# They do not fail, or what their failure would mean is no business of this code.
HARMLESS = {
    # Answers from memory.
    "environ", "getenv", "geteuid", "getpid", "getuid", "unsetenv", "__errno_location",
    "__libc_single_threaded", "memchr", "memcmp", "memcpy", "memmove", "memset", "snprintf", "strcmp",
    "strlen", "sigemptyset", "sigfillset", "sigaction", "pthread_mutex_lock", "pthread_mutex_unlock",
    "pthread_sigmask", "free",
    # Of a file that is one.
    "lseek",
    # Last words, and what nobody is told the outcome of.
    "abort", "fwrite", "stderr", "openlog", "syslog", "closelog",
    # The linker's and the compiler's own.
    "_GLOBAL_OFFSET_TABLE_", "__dso_handle", "__gxx_personality_v0", "__stack_chk_fail",
}
COMPILERS = ("_Z", "__cxa_", "_Unwind_", "__asan_", "__ubsan_", "__tsan_", "__sanitizer_",
             "__lsan_", "__local_asan_")

# What of the C++ library ends in the kernel; the calls behind it stand before the C library's, too.
KNOWN_LIBRARY = {
    "std::filesystem::remove_all", "std::filesystem::status", "std::basic_filebuf::open",
    "std::basic_filebuf::close", "std::thread::_M_start_thread", "std::thread::join",
}
FOLDERS = ("std::filesystem::", "std::basic_filebuf", "std::thread::", "std::basic_ifstream",
           "std::basic_ofstream", "std::basic_fstream", "std::random_device")
IN_MEMORY = ("path::", "::~", "::basic_filebuf(", "_State", "basic_ifstream(")


def undefined(library, *options):
    text = subprocess.run(["nm", "--undefined-only", *options, library], check=True,
                          capture_output=True, text=True).stdout
    return {line.split(maxsplit=1)[1] for line in text.splitlines() if line.startswith(" ")}


def defined(library):
    text = subprocess.run(["nm", "--dynamic", "--defined-only", library], check=True,
                          capture_output=True, text=True).stdout
    return {line.split()[2].partition("@")[0] for line in text.splitlines()}


class CallsTest(unittest.TestCase):
    def setUp(self):
        self.product = os.environ["VALDORN_POSIX_LIBRARY"]

    def test_each_call_of_the_c_library_can_fail(self):
        called = {name for name in undefined(self.product) if not name.startswith(COMPILERS)}
        self.assertIn("open", called)
        self.assertEqual(called - defined(os.environ["VALDORN_FAILING_CALLS"]) - HARMLESS, set())

    def test_each_use_of_the_c_library_through_the_cpp_library_is_known(self):
        names = {name.replace("__cxx11::", "").replace("_V2::", "").replace(
            "<char, std::char_traits<char> >", "") for name in undefined(self.product, "--demangle")}
        used = {name.partition("(")[0] for name in names
                if name.startswith(FOLDERS) and not any(word in name for word in IN_MEMORY)}
        self.assertIn("std::filesystem::remove_all", used)
        self.assertEqual(used - KNOWN_LIBRARY, set())


if __name__ == "__main__":
    unittest.main()
