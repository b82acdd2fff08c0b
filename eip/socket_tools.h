#ifndef EIP_SOCKET_TOOLS_H
#define EIP_SOCKET_TOOLS_H

#include <netinet/in.h>
#include <sys/time.h>

/// Small operations on sockets. Free of state: any thread, as far as the descriptor allows it.

/// A time in milliseconds as the seconds and microseconds that select() and the socket options
/// want.
timeval KTimevalFrom(unsigned long ms);

/// Sets the receive (`rx` true) or the send time-out of a socket, in milliseconds; 0 waits
/// without limit. Returns 1 on success, 0 on failure (errno).
int KSocketSetTimeout(int fd, unsigned long ms, bool rx);
int KSocketSetRxTimeout(int fd, unsigned long ms);
int KSocketSetTxTimeout(int fd, unsigned long ms);

/// Makes a TCP socket over IPv4, close-on-exec, on every kernel. `protocol` as socket() takes it.
/// The caller closes it. Returns the descriptor, or -1 with errno.
int KCreateTcpSocket(int protocol);

/// Makes a pair of connected Unix-domain stream sockets, close-on-exec. The caller closes both.
/// Returns socketpair()'s result: 0, or -1 with errno.
int KCreateSocketPair(int* fds);

/// Sets or clears O_NONBLOCK and keeps the other flags. Returns 1 on success, 0 on failure
/// (errno).
int KSetNonBlockingMode(int fd, bool on);

/// Looks the first IPv4 address of a host (dotted text or a name) up, which takes the system's own
/// time. 0, or what getaddrinfo() gives as its reason, with `address` untouched.
int KLookUpHost(const char* host, in_addr* address);

/// Closes the descriptor.
void KCloseSocket(int fd);

/// Reads until the bytes end with a line feed, `len` bytes are in, the peer closes, or a read
/// fails with anything but EINTR. Returns the number of bytes, 0 when `len` < 1. The text is not
/// terminated.
int KReceiveLine(int fd, char* buf, int len);

#endif
