// A stand-in for the outside tamper verifiers, which the tests cannot have. It is built into
// libraries named like the real ones and exports, as chosen at build time, the functions the
// program looks up: RVJ_Verify, JCOMSIA_CheckHashValue, JCOMSIA_SVG_CheckHashValue.
//
// Each answers the code written into the checked file itself, as "@RVJ=<n>@",
// "@JCOMSIA=<n>@" or "@JCOMSIA_SVG=<n>@" anywhere in its bytes (after a JPEG's end, in an SVG
// comment), and 12345 when the file holds none. When the environment names a log file in
// TOVI_STANDIN_LOG, every call appends one line to it: the function, the size or the file
// name it was given, and the code it answered, so that a test sees who was asked, in which
// order, and with what.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#if defined(_WIN32)
#define STANDIN_EXPORT extern "C" __declspec(dllexport)
#else
#define STANDIN_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

constexpr int kNoMarker = 12345;
constexpr int kUnreadable = 54321;

int CodeIn(const char* bytes, size_t size, const std::string& key) {
    const std::string marker = "@" + key + "=";
    const std::string_view text(bytes, size);
    const size_t at = text.find(marker);
    if (at == std::string_view::npos) {
        return kNoMarker;
    }
    const std::string number(text.substr(at + marker.size(), 12));
    return std::atoi(number.c_str());
}

bool ReadFile(const char* path, std::string& bytes) {
    std::FILE* file = path ? std::fopen(path, "rb") : nullptr;
    if (!file) {
        return false;
    }
    char buffer[65536];
    size_t n = 0;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
        bytes.append(buffer, n);
    }
    std::fclose(file);
    return true;
}

void Log(const char* function, const std::string& argument, int code) {
    const char* logPath = std::getenv("TOVI_STANDIN_LOG");
    if (!logPath || !*logPath) {
        return;
    }
    if (std::FILE* log = std::fopen(logPath, "ab")) {
        std::fprintf(log, "%s %s %d\n", function, argument.c_str(), code);
        std::fclose(log);
    }
}

std::string BaseName(const char* path) {
    const std::string text = path ? path : "";
    const size_t slash = text.find_last_of("/\\");
    return slash == std::string::npos ? text : text.substr(slash + 1);
}

[[maybe_unused]] int HashCheck(const char* function, const char* key, const char* path) {
    std::string bytes;
    const int code = ReadFile(path, bytes) ? CodeIn(bytes.data(), bytes.size(), key) : kUnreadable;
    Log(function, BaseName(path), code);
    return code;
}

}  // namespace

// Every variant exports something, so that even the one without a verifier function is a
// library that loads.
STANDIN_EXPORT int StandInVerifierVersion() {
    return 1;
}

#ifdef STANDIN_RVJ
STANDIN_EXPORT int RVJ_Verify(const void* fileBytes, unsigned long size) {
    const int code =
        fileBytes ? CodeIn(static_cast<const char*>(fileBytes), size, "RVJ") : kNoMarker;
    Log("RVJ_Verify", std::to_string(size), code);
    return code;
}
#endif

#ifdef STANDIN_JPEG
STANDIN_EXPORT int JCOMSIA_CheckHashValue(const char* path) {
    return HashCheck("JCOMSIA_CheckHashValue", "JCOMSIA", path);
}
#endif

#ifdef STANDIN_SVG
STANDIN_EXPORT int JCOMSIA_SVG_CheckHashValue(const char* path) {
    return HashCheck("JCOMSIA_SVG_CheckHashValue", "JCOMSIA_SVG", path);
}
#endif
