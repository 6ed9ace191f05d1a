#include "l10n/Languages.h"

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>

#include "access/ErrorHandling.h"
#include "l10n/DisplayNames.h"
#include "l10n/LanguageFiles.h"
#include "orvmysql/Language.h"
#include "query/TextUtil.h"

#ifndef ORVMYSQL_INSTALLED_DATA_DIR
#define ORVMYSQL_INSTALLED_DATA_DIR "/usr/local/share/orvmysql"
#endif

namespace orvmysql {

namespace {

using detail::TrimBlanks;
using Catalog = std::unordered_map<int32_t, std::string>;

// A file's contents, or what was wrong with it: either is kept, so that a
// broken file is read once and reported the same way every time it is asked for.
template <class T>
struct Loaded {
  T value{};
  std::optional<Error> problem;

  const T& Get() const {
    if (problem) throw *problem;
    return value;
  }
};

template <class T, class Read>
std::shared_ptr<const Loaded<T>> LoadOnce(
    std::map<std::string, std::shared_ptr<const Loaded<T>>>& cache, const std::string& key,
    Read&& read) {
  auto found = cache.find(key);
  if (found != cache.end()) return found->second;
  auto loaded = std::make_shared<Loaded<T>>();
  try {
    loaded->value = read();
  } catch (...) {
    loaded->problem = detail::CurrentError();
  }
  return cache.emplace(key, std::move(loaded)).first->second;
}

struct State {
  std::mutex mutex;
  std::optional<std::string> chosen;  // by SetLanguage
  std::map<std::string, std::shared_ptr<const Loaded<std::vector<InstalledLanguage>>>> languages;
  std::map<std::string, std::shared_ptr<const Loaded<Catalog>>> catalogs;
};

State& TheState() {
  static State state;
  return state;
}

std::vector<InstalledLanguage> ReadLanguagesFile(const std::filesystem::path& dir) {
  detail::XmlFile file("languages file", (dir / "Languages.xml").string());
  if (detail::LocalName(file.Root()) != "languages") {
    file.Fail("the root element is '" + std::string(file.Root().name()) + "', not 'languages'",
              file.Root());
  }
  std::vector<InstalledLanguage> list;
  for (pugi::xml_node node : file.Root().children()) {
    if (node.type() != pugi::node_element) continue;
    if (detail::LocalName(node) != "language") {
      file.Fail("unexpected element '" + std::string(node.name()) + "'", node);
    }
    const auto value = [&](const char* name) {
      const std::string_view text = TrimBlanks(node.attribute(name).value());
      if (text.empty()) file.Fail(std::string("the language lacks its ") + name, node);
      return std::string(text);
    };
    InstalledLanguage language{value("locale"), value("name"), value("catalog"),
                               value("stylesheet")};
    for (const InstalledLanguage& other : list) {
      if (detail::SameText(other.locale, language.locale)) {
        file.Fail("the locale '" + language.locale + "' is listed twice", node);
      }
    }
    language.catalog = (dir / language.catalog).lexically_normal().string();
    language.stylesheet = (dir / language.stylesheet).lexically_normal().string();
    list.push_back(std::move(language));
  }
  return list;
}

std::shared_ptr<const Loaded<std::vector<InstalledLanguage>>> LanguagesFile() {
  const std::string dir = LanguageDataDirectory();
  State& state = TheState();
  std::lock_guard lock(state.mutex);
  return LoadOnce(state.languages, dir, [&] { return ReadLanguagesFile(dir); });
}

std::shared_ptr<const Loaded<Catalog>> CatalogOf(const InstalledLanguage& language) {
  State& state = TheState();
  std::lock_guard lock(state.mutex);
  return LoadOnce(state.catalogs, language.catalog,
                  [&] { return detail::ReadMessageCatalog(language.catalog); });
}

// "de_DE.UTF-8@euro" and "de-de" both give "de_de"; "C", "POSIX" and empty
// text give empty text (the built-in texts).
std::string LocaleKey(std::string_view locale) {
  locale = TrimBlanks(locale);
  std::string key = detail::LowerCase(locale.substr(0, locale.find_first_of(".@")));
  for (char& c : key) {
    if (c == '-') c = '_';
  }
  return key == "c" || key == "posix" ? std::string() : key;
}

std::string_view LanguagePart(std::string_view key) {
  return key.substr(0, key.find('_'));
}

// The language a locale stands for: the one with the same locale, else the
// first with the same language part; none for the built-in texts. Raises 5
// for a missing or broken languages file, and, when `required`, for a locale
// that no language matches.
std::optional<InstalledLanguage> LanguageFor(std::string_view locale, bool required) {
  const std::string key = LocaleKey(locale);
  if (key.empty()) return std::nullopt;
  const std::vector<InstalledLanguage>& list = LanguagesFile()->Get();
  for (const InstalledLanguage& language : list) {
    if (LocaleKey(language.locale) == key) return language;
  }
  for (const InstalledLanguage& language : list) {
    if (LanguagePart(LocaleKey(language.locale)) == LanguagePart(key)) return language;
  }
  if (!required) return std::nullopt;
  std::string installed;
  for (const InstalledLanguage& language : list) {
    installed += (installed.empty() ? "" : ", ") + language.locale;
  }
  ThrowRuntimeError(kErrInvalidCall, "no installed language matches the locale '" +
                                         std::string(locale) + "' (installed: " + installed + ")");
}

// The locale that chooses the current language, and whether SetLanguage chose it.
std::pair<std::string, bool> CurrentLocale() {
  {
    State& state = TheState();
    std::lock_guard lock(state.mutex);
    if (state.chosen) return {*state.chosen, true};
  }
  const char* program = std::setlocale(LC_MESSAGES, nullptr);
  return {program != nullptr ? program : "", false};
}

std::optional<InstalledLanguage> CurrentOrGiven(std::string_view locale) {
  if (!locale.empty()) return LanguageFor(locale, true);
  auto [current, chosen] = CurrentLocale();
  return LanguageFor(current, chosen);
}

}  // namespace

std::string LanguageDataDirectory() {
  const char* dir = std::getenv("ORVMYSQL_DATA_DIR");
  return dir != nullptr && *dir != '\0' ? dir : ORVMYSQL_INSTALLED_DATA_DIR;
}

std::vector<InstalledLanguage> InstalledLanguages() {
  return detail::Guard({"Language:InstalledLanguages Ln "}, [] { return LanguagesFile()->Get(); });
}

void SetLanguage(std::string_view locale) {
  detail::Guard({"Language:SetLanguage Ln "}, [&] {
    std::optional<std::string> chosen;
    if (!TrimBlanks(locale).empty()) {
      if (auto language = LanguageFor(locale, true)) CatalogOf(*language)->Get();
      chosen.emplace(locale);
    }
    State& state = TheState();
    std::lock_guard lock(state.mutex);
    state.chosen = std::move(chosen);
  });
}

std::string CurrentLanguage() {
  return detail::Guard({"Language:CurrentLanguage Ln "}, [] {
    const std::optional<InstalledLanguage> language = CurrentOrGiven({});
    if (!language) return std::string();
    CatalogOf(*language)->Get();
    return language->locale;
  });
}

std::string MessageText(int32_t number, std::string_view locale) {
  return detail::Guard({"Language:MessageText Ln "}, [&] {
    if (locale.empty()) return detail::LoadMessage(number);
    std::string text = detail::HostMessage(number);
    if (text.empty()) {
      if (auto language = LanguageFor(locale, true)) {
        const Catalog& catalog = CatalogOf(*language)->Get();
        auto found = catalog.find(number);
        if (found != catalog.end()) text = found->second;
      }
    }
    return text.empty() ? detail::BuiltInMessage(number) : text;
  });
}

std::string TranslateDisplayNames(std::string_view xml, std::string_view locale) {
  return detail::Guard({"Language:TranslateDisplayNames Ln "}, [&] {
    const std::optional<InstalledLanguage> language = CurrentOrGiven(locale);
    return language ? detail::ApplyStylesheet(language->stylesheet, xml) : std::string(xml);
  });
}

void SetMessageLookup(std::string (*lookup)(int32_t number)) {
  detail::SetMessageLookup(lookup);
}

namespace detail {

std::string CatalogMessage(int32_t number) noexcept {
  try {
    const std::optional<InstalledLanguage> language = LanguageFor(CurrentLocale().first, false);
    if (!language) return {};
    const auto catalog = CatalogOf(*language);
    if (catalog->problem) return {};
    auto found = catalog->value.find(number);
    return found != catalog->value.end() ? found->second : std::string();
  } catch (...) {
    return {};
  }
}

}  // namespace detail

}  // namespace orvmysql
