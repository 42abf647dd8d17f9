#pragma once

#include <QString>

#include <memory>

class QLibrary;

// One of the outside parties' tamper verifiers: a shared library that lies in the program
// folder (an installed copy's library folder, see MibProgramFolder) under a fixed base name
// ("RVRFYJPG", "JACICCHS") with this platform's suffix. It is loaded at run time, so that the
// program runs without it, and its functions are resolved by name whenever they are needed.
class ToviVerifierLibrary {
public:
    // What Resolve hands back; the caller casts it to the function's real type.
    using Function = void (*)();

    ToviVerifierLibrary();
    // Unloads the library when this object loaded it.
    ~ToviVerifierLibrary();
    ToviVerifierLibrary(const ToviVerifierLibrary&) = delete;
    ToviVerifierLibrary& operator=(const ToviVerifierLibrary&) = delete;

    // The library's file name on this platform: "JACICCHS.dll", "JACICCHS.dylib" or
    // "JACICCHS.so".
    static QString FileName(const QString& baseName);
    // The folder searched: the program folder or an installed copy's library folder, or the
    // test override; ends in a separator.
    static QString ProgramPath();
    // Tests point the search at a folder of their own; an empty folder returns to the
    // program folder.
    static void SetProgramPathOverride(const QString& folder);
    // The full path of the library in the program folder, its name compared without regard to
    // case as the home platform does; empty when there is none.
    static QString Find(const QString& baseName);

    // Loads the library file at path (a no-op answering true when it is loaded already);
    // false when the file is not a loadable library, with the reason in ErrorString.
    bool Load(const QString& path);
    bool IsLoaded() const;
    void Unload();
    // The exported function called name, or null when the library lacks it or isn't loaded.
    Function Resolve(const char* name) const;
    QString ErrorString() const;

private:
    std::unique_ptr<QLibrary> library;
    QString error;
};
