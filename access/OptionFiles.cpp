#include "access/OptionFiles.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

#include "orvmysql/Error.h"

namespace orvmysql::detail {

namespace {

namespace fs = std::filesystem;

// Includes nest at most this deep, so that a file including itself ends.
constexpr int kMaxIncludeDepth = 16;

std::string Env(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::string_view Trim(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

std::string_view Unquoted(std::string_view value) {
  if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
      value.back() == value.front()) {
    return value.substr(1, value.size() - 2);
  }
  return value;
}

class Reader {
 public:
  explicit Reader(OptionFileSettings& settings) : settings_(settings) {}

  void File(const fs::path& path, int depth = 0) {
    std::ifstream in(path);
    if (!in || depth > kMaxIncludeDepth) return;
    bool in_group = false, in_client_group = false;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
      const std::string_view text = Trim(line);
      if (text.empty() || text.front() == '#' || text.front() == ';') continue;
      if (text.front() == '!') {
        Directive(text, depth);
      } else if (text.front() == '[') {
        const auto close = text.find(']');
        const std::string_view group =
            close != std::string_view::npos ? Trim(text.substr(1, close - 1)) : std::string_view();
        in_group = group == kOptionGroup;
        in_client_group =
            in_group || group == "client" || group == "client-server" || group == "client-mariadb";
      } else {
        if (in_client_group) {
          settings_.client_settings += text;
          settings_.client_settings += '\n';
        }
        if (in_group) Setting(text, path, number);
      }
    }
  }

 private:
  void Directive(std::string_view text, int depth) {
    const auto blank = text.find_first_of(" \t");
    if (blank == std::string_view::npos) return;
    const std::string_view name = text.substr(0, blank);
    const fs::path target(std::string(Trim(text.substr(blank))));
    if (name == "!include") {
      File(target, depth + 1);
    } else if (name == "!includedir") {
      std::error_code ec;
      std::vector<fs::path> files;
      for (const auto& entry : fs::directory_iterator(target, ec)) {
        if (entry.path().extension() == ".cnf") files.push_back(entry.path());
      }
      std::sort(files.begin(), files.end());
      for (const auto& file : files) File(file, depth + 1);
    }
  }

  void Setting(std::string_view text, const fs::path& path, int number) {
    const auto equals = text.find('=');
    std::string key(Trim(text.substr(0, equals)));
    std::replace(key.begin(), key.end(), '_', '-');
    const std::string_view value = equals == std::string_view::npos
                                       ? std::string_view()
                                       : Unquoted(Trim(text.substr(equals + 1)));
    if (key == "read-timeout") {
      settings_.read_timeout = Seconds(key, value, path, number);
    } else if (key == "write-timeout") {
      settings_.write_timeout = Seconds(key, value, path, number);
    } else if (key == "pool") {
      settings_.pool = value;
    } else if (key == "pool-size") {
      settings_.pool_size = value;
    } else if (key == "pool-idle-timeout") {
      settings_.pool_idle_timeout = value;
    } else if (key == "lock-retries") {
      settings_.lock_retries = WholeNumber(key, value, path, number, "");
    }
  }

  static unsigned Seconds(const std::string& key, std::string_view value, const fs::path& path,
                          int number) {
    return WholeNumber(key, value, path, number, " of seconds");
  }

  static unsigned WholeNumber(const std::string& key, std::string_view value, const fs::path& path,
                              int number, const char* unit) {
    unsigned result = 0;
    const auto [end, ec] = std::from_chars(value.data(), value.data() + value.size(), result);
    if (value.empty() || ec != std::errc() || end != value.data() + value.size()) {
      ThrowRuntimeError(kErrInvalidCall, "option file " + path.string() + ", line " +
                                             std::to_string(number) + ": " + key +
                                             " must be a whole number" + unit + ", not '" +
                                             std::string(value) + "'");
    }
    return result;
  }

  OptionFileSettings& settings_;
};

}  // namespace

OptionFileSettings ReadOptionFiles() {
  OptionFileSettings settings;
  Reader reader(settings);
  settings.file = Env("ORVMYSQL_OPTION_FILE");
  if (!settings.file.empty()) {
    if (access(settings.file.c_str(), R_OK) != 0 || fs::is_directory(settings.file)) {
      ThrowRuntimeError(kErrInvalidCall, "the option file " + settings.file +
                                             " named by ORVMYSQL_OPTION_FILE cannot be read");
    }
    reader.File(settings.file);
    return settings;
  }
  // The files Connector/C reads, in its order, so that a later file wins.
  std::string home_dir = Env("MARIADB_HOME");
  if (home_dir.empty()) home_dir = Env("MYSQL_HOME");
  for (const std::string& file : {std::string("/etc/my.cnf"), std::string("/etc/mysql/my.cnf"),
                                  home_dir.empty() ? std::string() : home_dir + "/my.cnf",
                                  Env("HOME").empty() ? std::string() : Env("HOME") + "/.my.cnf"}) {
    if (!file.empty()) reader.File(file);
  }
  return settings;
}

}  // namespace orvmysql::detail
