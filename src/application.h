#pragma once

/// What every program that shows the window settles before it makes its QApplication: how the
/// window grows with a desktop's letters, what is drawn with, and that traces may find no reader.
void prepareApplication();

/// What it settles next: the light colours that the window's style sheet goes with, on dark
/// desktops too.
void dressApplication();
