#include <windows.h>

#include "driver_connection.h"

#include <cstdlib>
#include <mutex>
#include <thread>

#include <winsock2.h>

namespace {

SOCKET connection = INVALID_SOCKET;
std::mutex writing;

std::string Escape(const std::string& field) {
  std::string out;
  for (const char c : field) {
    switch (c) {
      case '\\':
        out += "\\\\";
        break;
      case '\t':
        out += "\\t";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      default:
        out += c;
    }
  }
  return out;
}

char Unescape(char c) {
  switch (c) {
    case 't':
      return '\t';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    default:
      return c;
  }
}

Line Split(const std::string& text) {
  Line line(1);
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\t') {
      line.emplace_back();
    } else if (text[i] == '\\' && i + 1 < text.size()) {
      line.back() += Unescape(text[++i]);
    } else {
      line.back() += text[i];
    }
  }
  return line;
}

void ReadLines(void (*post)(Line* line)) {
  std::string rest;
  char buffer[65536];
  for (int got; (got = recv(connection, buffer, sizeof buffer, 0)) > 0;) {
    rest.append(buffer, static_cast<std::size_t>(got));
    std::size_t start = 0;
    for (std::size_t end; (end = rest.find('\n', start)) != std::string::npos; start = end + 1) {
      post(new Line(Split(rest.substr(start, end - start))));
    }
    rest.erase(0, start);
  }
}

}  // namespace

bool ConnectToDriver(void (*post)(Line* line)) {
  const char* port = std::getenv("WEB_VIEW_STAND_IN_PORT");
  WSADATA data{};
  if (port == nullptr || WSAStartup(MAKEWORD(2, 2), &data) != 0) return false;
  connection = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<u_short>(std::atoi(port)));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) return false;
  std::thread(ReadLines, post).detach();
  return true;
}

void TellDriver(const Line& line) {
  std::string text;
  for (const std::string& field : line) text += (text.empty() ? "" : "\t") + Escape(field);
  text += '\n';
  std::lock_guard guard(writing);
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
  std::wstring out(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)),
                   L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), size, out.data(), static_cast<int>(out.size()));
  return out;
}
