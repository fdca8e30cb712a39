#include <cstdlib>
#include <string>

#include "net/updatecheck.h"

namespace tarvoke::net {

UpdateServer configuredServer() {
    UpdateServer server{TARVOKE_UPDATE_HOST, TARVOKE_UPDATE_PORT, TARVOKE_VERSION};
    if (const char* port = std::getenv("TARVOKE_UPDATE_PORT")) {
        const int number = std::atoi(port);
        if (number >= 1 && number <= 65535) server.port = number;
    }
    return server;
}

}  // namespace tarvoke::net
