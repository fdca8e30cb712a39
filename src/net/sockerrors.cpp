#include "net/sockerrors.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace tarvoke::net {
namespace {

struct Entry {
    int32_t number;
    std::string_view text;
};

// Sorted by number: the socket library's numbers, with the few system ones
// its calls pass on, and the class's own from 40006.
constexpr std::array<Entry, 106> kTable{{
    {6, "Specified event object handle is invalid."},
    {7, "Out of memory."},
    {8, "Insufficient memory available."},
    {87, "One or more parameters are invalid."},
    {380, "Invalid property value."},
    {383, "Property is read-only."},
    {394, "Property is write-only."},
    {995, "Overlapped operation aborted."},
    {996, "Overlapped I/O event object not in signaled state."},
    {997, "Overlapped operations will complete later."},
    {10004, "Interrupted function call."},
    {10009, "File handle is not valid."},
    {10013, "Permission denied."},
    {10014, "Bad address."},
    {10022, "Invalid argument."},
    {10024, "Too many open files."},
    {10035, "Resource temporarily unavailable."},
    {10036, "Operation now in progress."},
    {10037, "Operation already in progress."},
    {10038, "Socket operation on nonsocket."},
    {10039, "Destination address required."},
    {10040, "Message too long."},
    {10041, "Protocol wrong type for socket."},
    {10042, "Bad protocol option."},
    {10043, "Protocol not supported."},
    {10044, "Socket type not supported."},
    {10045, "Operation not supported."},
    {10046, "Protocol family not supported."},
    {10047, "Address family not supported by protocol family."},
    {10048, "Address already in use."},
    {10049, "Cannot assign requested address."},
    {10050, "Network is down."},
    {10051, "Network is unreachable."},
    {10052, "Network dropped connection on reset."},
    {10053, "Software caused connection abort."},
    {10054, "Connection reset by peer."},
    {10055, "No buffer space available."},
    {10056, "Socket is already connected."},
    {10057, "Socket is not connected."},
    {10058, "Cannot send after socket shutdown."},
    {10059, "Too many references."},
    {10060, "Connection timed out."},
    {10061, "Connection refused."},
    {10062, "Cannot translate name."},
    {10063, "Name too long."},
    {10064, "Host is down."},
    {10065, "No route to host."},
    {10066, "Directory not empty."},
    {10067, "Too many processes."},
    {10068, "User quota exceeded."},
    {10069, "Disk quota exceeded."},
    {10070, "Stale file handle reference."},
    {10071, "Item is remote."},
    {10091, "Network subsystem is unavailable."},
    {10092, "Winsock.dll version out of range."},
    {10093, "Successful WSAStartup not yet performed."},
    {10101, "Graceful shutdown in progress."},
    {10102, "No more results."},
    {10103, "Call has been canceled."},
    {10104, "Procedure call table is invalid."},
    {10105, "Service provider is invalid."},
    {10106, "Service provider failed to initialize."},
    {10107, "System call failure."},
    {10108, "Service not found."},
    {10109, "Class type not found."},
    {10110, "No more results."},
    {10111, "Call was canceled."},
    {10112, "Database query was refused."},
    {11001, "Host not found."},
    {11002, "Nonauthoritative host not found."},
    {11003, "This is a nonrecoverable error."},
    {11004, "Valid name, no data record of requested type."},
    {11005, "QOS receivers."},
    {11006, "QOS senders."},
    {11007, "No QOS senders."},
    {11008, "QOS no receivers."},
    {11009, "QOS request confirmed."},
    {11010, "QOS admission error."},
    {11011, "QOS policy failure."},
    {11012, "QOS bad style."},
    {11013, "QOS bad object."},
    {11014, "QOS traffic control error."},
    {11015, "QOS generic error."},
    {11016, "QOS service type error."},
    {11017, "QOS flowspec error."},
    {11018, "Invalid QOS provider buffer."},
    {11019, "Invalid QOS filter style."},
    {11020, "Invalid QOS filter type."},
    {11021, "Incorrect QOS filter count."},
    {11022, "Invalid QOS object length."},
    {11023, "Incorrect QOS flow count."},
    {11024, "Unrecognized QOS object."},
    {11025, "Invalid QOS policy object."},
    {11026, "Invalid QOS flow descriptor."},
    {11027, "Invalid QOS provider-specific flowspec."},
    {11028, "Invalid QOS provider-specific filterspec."},
    {11029, "Invalid QOS shape discard mode object."},
    {11030, "Invalid QOS shaping rate object."},
    {11031, "Reserved policy QOS element type."},
    {40006, "Wrong protocol or connection state for the requested transaction or request."},
    {40014, "The argument passed to a function was not in the correct format or in the specified range."},
    {40017, "Successful."},
    {40018, "Unsupported variant types."},
    {40020, "Invalid operation at current state."},
    {40021, "Argument is out of range."},
    {40026, "Wrong protocol for the requested transaction or request."},
}};

}  // namespace

std::string_view errorText(int32_t number) {
    const auto it = std::lower_bound(kTable.begin(), kTable.end(), number, [](const Entry& e, int32_t n) { return e.number < n; });
    return it != kTable.end() && it->number == number ? it->text : std::string_view();
}

int32_t fromErrno(int error) {
    switch (error) {
    case EINTR: return 10004;
    case EBADF: return 10009;
    case EACCES: case EPERM: return 10013;
    case EFAULT: return 10014;
    case EINVAL: return 10022;
    case EMFILE: case ENFILE: return 10024;
    case EAGAIN: return 10035;
    case EINPROGRESS: return 10036;
    case EALREADY: return 10037;
    case ENOTSOCK: return 10038;
    case EDESTADDRREQ: return 10039;
    case EMSGSIZE: return 10040;
    case EPROTOTYPE: return 10041;
    case ENOPROTOOPT: return 10042;
    case EPROTONOSUPPORT: return 10043;
    case ESOCKTNOSUPPORT: return 10044;
    case EOPNOTSUPP: return 10045;
    case EPFNOSUPPORT: return 10046;
    case EAFNOSUPPORT: return 10047;
    case EADDRINUSE: return 10048;
    case EADDRNOTAVAIL: return 10049;
    case ENETDOWN: return 10050;
    case ENETUNREACH: return 10051;
    case ENETRESET: return 10052;
    case ECONNABORTED: return 10053;
    case ECONNRESET: return 10054;
    case ENOBUFS: case ENOMEM: return 10055;
    case EISCONN: return 10056;
    case ENOTCONN: return 10057;
    case EPIPE: case ESHUTDOWN: return 10058;
    case ETIMEDOUT: return 10060;
    case ECONNREFUSED: return 10061;
    case ENAMETOOLONG: return 10063;
    case EHOSTDOWN: return 10064;
    case EHOSTUNREACH: return 10065;
    default: return 10107;
    }
}

}  // namespace tarvoke::net
