#pragma once

// Slide mode: the host shows the photographs as a presentation, and the viewer refuses comment
// editing, right clicks on cells and saving while it lasts. One flag for the whole process,
// off at start; the host enters and leaves the mode, the viewer only reads it.
void SetSlideMode(bool on);
bool IsSlideMode();
