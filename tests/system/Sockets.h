// SPDX-License-Identifier: Apache-2.0
// Sockets of IPv4 on this machine, whichever system it has, for the clients and servers that tests play themselves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace test_sockets {

// Listens at 127.0.0.1, at a port that the system picks. Throws std::runtime_error.
int Listen(uint16_t& port);
// The next client's socket; -1 once the listening has been stopped, by whichever thread.
int Accept(int listener);
void StopListening(int listener);
void CloseListener(int listener);  // after it was stopped and nobody accepts

// From that address of this machine, whichever where there is none. Throws std::runtime_error.
int Connect(uint16_t port, const char* from = nullptr);

// As send() and recv() answer; nobody gets a signal.
ptrdiff_t Send(int socket, const char* bytes, size_t size);
ptrdiff_t Receive(int socket, char* bytes, size_t size);
bool IsReadableWithin(int socket, int milliseconds);
void ShutDown(int socket);  // both ways
void Close(int socket);

}  // namespace test_sockets
