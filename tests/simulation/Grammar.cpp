#include "simulation/Grammar.h"

#include <algorithm>
#include <array>

#include "platform/ChildLauncher.h"

namespace valdorn::simulation {

namespace {

constexpr std::string_view time = "time=\"2026-03-01T10:00:00Z\" ";

constexpr std::array<std::string_view, 12> usual = {
    "level=debug msg=\"runner: ada, with version: v0.2.11, with labels: [macos], declare "
    "successfully\"",
    "level=info msg=\"runner: ada, with version: v0.3.0, with labels: [], declare successfully\"",
    "level=info msg=\"task 7 repo is acme/site https://gitea.test\"",
    "level=debug msg=\"task 8 repo is ada/notes\"",
    "level=debug msg=\"Running job with maxParallel=1 for each platform\"",
    "level=info msg=\"Running job with maxParallel=1\"",
    "level=info msg=\"Worker 0 finished (1 tasks executed)\"",
    "level=debug msg=\"Worker 1 finished (2 tasks executed)\"",
    "level=error msg=\"dial tcp 10.0.0.2:3000: connect: no route to host\"",
    "level=warning msg=\"open socket: permission denied\"",
    "level=info msg=polling",
    "level=debug msg=polling"};

constexpr std::array<std::string_view, 14> plain = {"[CI/build] Run step",
                                                    "[My Flow/job] x",
                                                    "[a/b c] x",
                                                    "[//a/b] y",
                                                    "[a/b/c] z",
                                                    "[ab] x",
                                                    "[a/] x",
                                                    "[/b] x",
                                                    "[] x",
                                                    "[a/b",
                                                    "x [a/b] y",
                                                    "Error: unknown flag",
                                                    "Error: no route to host",
                                                    ""};

constexpr std::array<std::string_view, 33> fragments = {" repo is ",
                                                        "repo is acme",
                                                        " repo is  ada/x  y",
                                                        "Running job with maxParallel",
                                                        "running job with maxParallel",
                                                        "Worker",
                                                        "finished (",
                                                        "Worker 2 finished (ok)",
                                                        "finished(",
                                                        "declare successfully",
                                                        "Declare successfully",
                                                        "no route to host",
                                                        "No route to host",
                                                        "permission denied",
                                                        "with version: ",
                                                        "with version: 1.2.3,",
                                                        "with version: v9 x",
                                                        "with version:",
                                                        "time=\"",
                                                        "time=x",
                                                        "level=debug",
                                                        "level=error",
                                                        "level=warning",
                                                        "Error:",
                                                        "[x/y]",
                                                        "[",
                                                        "]",
                                                        "/",
                                                        " ",
                                                        "\r\n",
                                                        "\r",
                                                        "é漢😀",
                                                        std::string_view("\0x", 2)};

// What is a character, and what is broken: a lone second byte, a cut-off one, a surrogate, a short
// form of a slash.
constexpr std::array<std::string_view, 10> letters = {
    "a", "é", "漢", "😀", "e\xCC\x81", "\r\n", "\x80", "\xE2\x82", "\xED\xA0\x80", "\xC0\xAF"};

constexpr std::array<std::string_view, 15> fields = {
    "",         "ada",           "build box", "http://gitea.test:3000",
    "macos",    "macos,arm64",   "a\"b\\c",   "tab\tand\nline",
    "\x01\x1F", "http://h/a/b/", "漢字 — é…", "😀",
    " ",        "</script>",     "\x7F\u2028"};

std::string repeated(std::string_view text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t index = 0; index < count; ++index)
        all += text;
    return all;
}

}  // namespace

std::string Grammar::line(Random& random) {
    const std::size_t kind = random.below(10);
    if (kind < 6)
        return std::string(time).append(random.pick(usual));
    if (kind < 8)
        return std::string(random.pick(plain));
    std::string all = random.chance(30) ? std::string(time) : "";
    for (std::size_t left = 1 + random.below(4); left > 0; --left)
        all += random.chance(95) ? random.pick(fragments) : random.pick(letters);
    return all;
}

std::string Grammar::output(Random& random) {
    std::string all;
    for (std::size_t left = 1 + random.below(3); left > 0; --left) {
        const std::size_t end = random.below(20);
        all += line(random);
        all += end < 17 ? "\n" : end < 19 ? "\r\n" : "";
    }
    return all;
}

std::string Grammar::giant(Random& random) {
    if (random.chance(20))
        return repeated("\n", 5000);
    const std::string_view letter = letters[random.below(6)];
    const std::size_t bytes = random.pick({64000U, 64001U, 63999U, 70000U, 130000U});
    std::string all = repeated(letter, bytes / letter.size());
    all += repeated("x", bytes - all.size());
    return random.chance(20) ? "time=\"" + all : all;
}

std::string Grammar::keptLine(std::string_view words, std::size_t bytes) {
    std::string all = std::string(time).append("level=info msg=").append(words);
    all.resize(std::max(bytes, all.size() + 1), '.');
    return all + "\n";
}

std::vector<std::string> Grammar::cut(Random& random, const std::string& text) {
    std::vector<std::string> pieces;
    const bool isCutOften = random.chance(10);
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t left = text.size() - start;
        std::size_t length = random.chance(60) ? left : 1 + random.below(left);
        if (isCutOften && text.size() < 300)
            length = 1 + random.below(3);
        length = std::min(length, maxChunkBytes);
        pieces.push_back(text.substr(start, length));
        start += length;
    }
    return pieces;
}

std::string Grammar::field(Random& random) {
    std::string all(random.pick(fields));
    if (random.chance(20))
        all += random.pick(fields);
    return all;
}

std::string Grammar::folders(Random& random) {
    std::string all;
    for (std::size_t left = random.below(4); left > 0; --left)
        all += random.pick({":", "::", "/opt/x", "/usr/bin", " ", "/a b:", "/é:"});
    return all;
}

std::string Grammar::toolOutput(Random& random) {
    std::string all;
    for (std::size_t left = random.below(4); left > 0; --left) {
        all += random.pick({"INFO registering", "Error: instance address is empty", "",
                            "level=error x", "漢字", " "});
        all += random.pick({"\n", "\n", "\n\n", ""});
    }
    return random.chance(8) ? all + "\xFF" : all;
}

}  // namespace valdorn::simulation
