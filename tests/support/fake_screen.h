#pragma once

#include <string>
#include <vector>

namespace percussomatic {

// Stands in for the panel's window: keeps what behaviour asked of the screen, and how every control
// looked when it was last painted. GUI thread.

// Requests since the last call, in order: "sw_007 later", "bottone_001 now", "slider_001 from 40",
// "tempo box", "effects box", "midi boxes", "panel", "card dialog", "reader", "effects window",
// "flush".
std::vector<std::string> takeRedraws();

// Paints what is marked, as the window does when it has nothing else to do, and names what then
// still shows a former state because nobody asked for it.
std::vector<std::string> staleControls();

// Adds a request to the list, for the other fakes.
void recordRequest(std::string words);

// Everything freshly painted, no requests.
void resetFakeScreen();

} // namespace percussomatic
