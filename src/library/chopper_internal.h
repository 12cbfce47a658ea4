// What quarnel's own bindings set on a chopper that programs using the library do not need.
#pragma once

#include <string>

#include "quarnel/quarnel.h"

namespace quarnel {

// The program that runs DSSP's library for a build without it (the Python module, a shared
// object, cannot hold DSSP's archive, which is not position-independent). Empty: none.
void SetDsspHelper(Chopper& chopper, const std::string& program);

}  // namespace quarnel
