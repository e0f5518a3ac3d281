#include <windows.h>

#include "driver_connection.h"

#include <cstdlib>
#include <sstream>
#include <thread>

#include <winsock2.h>

namespace {

constexpr char kFieldEnd = '\x1f';
constexpr char kLineEnd = '\x1e';

SOCKET connection = INVALID_SOCKET;

Line Split(const std::string& text) {
  Line line;
  std::istringstream in(text + kFieldEnd);
  for (std::string field; std::getline(in, field, kFieldEnd);) line.push_back(field);
  return line;
}

void ReadLines(void (*post)(Line* line)) {
  std::string rest;
  char buffer[65536];
  for (int got; (got = recv(connection, buffer, sizeof buffer, 0)) > 0;) {
    rest.append(buffer, static_cast<std::size_t>(got));
    std::size_t start = 0;
    for (std::size_t end; (end = rest.find(kLineEnd, start)) != std::string::npos; start = end + 1) {
      post(new Line(Split(rest.substr(start, end - start))));
    }
    rest.erase(0, start);
  }
  TerminateProcess(GetCurrentProcess(), 98);
}

}  // namespace

void ConnectToDriver(void (*post)(Line* line)) {
  const char* port = std::getenv("WEB_VIEW_STAND_IN_PORT");
  WSADATA data{};
  WSAStartup(MAKEWORD(2, 2), &data);
  connection = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<u_short>(std::atoi(port != nullptr ? port : "")));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address);  // a failure ends the reading
  std::thread(ReadLines, post).detach();
}

void TellDriver(const Line& line) {
  std::string text;
  for (const std::string& field : line) text += (text.empty() ? "" : std::string(1, kFieldEnd)) + field;
  text += kLineEnd;
  for (std::size_t at = 0; at < text.size();) {
    const int sent = send(connection, text.data() + at, static_cast<int>(text.size() - at), 0);
    if (sent <= 0) return;
    at += static_cast<std::size_t>(sent);
  }
}

std::string Narrow(const wchar_t* text) {
  if (text == nullptr) return "(null)";
  const int needed = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  std::string out(static_cast<std::size_t>(needed), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, out.data(), needed, nullptr, nullptr);
  out.pop_back();
  return out;
}

std::wstring Wide(const std::string& text) {
  const int size = static_cast<int>(text.size());
  const int needed = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
  std::wstring out(static_cast<std::size_t>(needed), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), size, out.data(), needed);
  return out;
}
