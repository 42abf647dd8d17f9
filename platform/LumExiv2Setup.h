#pragma once

// Prepares exiv2 once per process: its log is muted (unreadable metadata is an ordinary
// outcome here and the library must not print) and its XMP parser is set up before any
// worker thread reads. Private to platform/.
void LumPrepareExiv2();
