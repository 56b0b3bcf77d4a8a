#include "sim/trace/StdoutCapture.h"

#include <cerrno>
#include <system_error>

namespace sim {

int StdoutCapture::checked(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), std::string("standard output: ") + what);
    }
    return result;
}

}  // namespace sim
