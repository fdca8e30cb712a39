#pragma once
// The socket's error numbers: the socket library's numbering (10004 to 11031)
// and the class's own, with their texts. System errors are told in the same
// numbers, so a handler sees 10061 for a refused connection on any platform.

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tarvoke::net {

enum SockError : int32_t {
    WouldBlock = 10035,
    AddressNotAvailable = 10049,
    HostNotFound = 11001,
    WrongState = 40006,
    BadArgument = 40014,
    UnsupportedType = 40018,
    InvalidOperation = 40020,
    OutOfRange = 40021,
    WrongProtocol = 40026,
};

// The table's text for a number; empty for a number not in it.
std::string_view errorText(int32_t number);

// errno in the socket library's numbering; 10107 ("System call failure.")
// for an errno it has no number for.
int32_t fromErrno(int error);

// Misuse by the caller (a wrong state, a bad argument), raised to it.
class SocketError : public std::runtime_error {
public:
    SocketError(int32_t number, std::string source)
        : std::runtime_error(std::string(errorText(number))), m_number(number), m_source(std::move(source)) {}
    int32_t number() const { return m_number; }
    // "UniSock." and the member that raised it.
    const std::string& source() const { return m_source; }

private:
    int32_t m_number;
    std::string m_source;
};

}  // namespace tarvoke::net
