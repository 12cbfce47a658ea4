// quarnel's version, as results files and --version give it.
#pragma once

namespace quarnel {

const char* VersionNumber();

}  // namespace quarnel
