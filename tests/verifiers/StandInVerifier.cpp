// A stand-in for the outside tamper verifiers, built into libraries named like the real ones
// and exporting, as chosen at build time, RVJ_Verify, JCOMSIA_CheckHashValue and
// JCOMSIA_SVG_CheckHashValue. Each answers the code written into the checked file itself as
// "@RVJ=<n>@", "@JCOMSIA=<n>@" or "@JCOMSIA_SVG=<n>@" anywhere in its bytes, 12345 when there is
// none. With TOVI_STANDIN_LOG set, every call appends "function argument code" to that file.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
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
    std::ifstream file(path ? path : "", std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return file.is_open();
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
