#include "sim/input/Bell.h"

namespace sim {

// Whoever rings comes through the live console, which there is none of here.

Bell::Bell() = default;

Bell::~Bell() = default;

void Bell::ring() {}

void Bell::answer() {}

}  // namespace sim
