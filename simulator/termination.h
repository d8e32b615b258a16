#pragma once

namespace simulator {

/// A descriptor that becomes readable when the user asks the program to end, which otherwise would
/// end at once and leave the link behind. To be called before there are threads: the signals would
/// end the program through any that does not have them blocked.
int watchForEnd();

} // namespace simulator
