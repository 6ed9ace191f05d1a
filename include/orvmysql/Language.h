#pragma once

// Languages: the library's messages and the display names of documents in the
// current language.
//
// The installed languages are listed in Languages.xml in the data directory:
// $ORVMYSQL_DATA_DIR when set, else the directory the library was installed
// with (<datadir>/orvmysql). Each language names its message catalog (XLIFF)
// and its display-name stylesheet (XSLT), relative to that directory.
//
// The current language is the one chosen by SetLanguage, else the one that
// matches the program's LC_MESSAGES locale (setlocale(LC_MESSAGES, nullptr)):
// "de_DE.UTF-8" matches de_DE, else the first language of "de". A locale no
// language matches ("C", "POSIX", ...) means the built-in English texts.
//
// A message comes from the host's lookup (SetMessageLookup) when it knows the
// number, else from the current language's catalog, else from the built-in
// table. A missing or broken languages file or catalog never stops an error
// from being raised: the built-in text is used, and the explicit calls below
// raise error 5 saying which file is wrong and where. Each file is read once;
// its contents, or what was wrong with it, are kept for the process.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "orvmysql/Export.h"

namespace orvmysql {

struct InstalledLanguage {
  std::string locale;      // "de_DE"
  std::string name;        // "Deutsch"
  std::string catalog;     // path of the message catalog
  std::string stylesheet;  // path of the display-name stylesheet
};

// The directory that holds Languages.xml.
ORVMYSQL_EXPORT std::string LanguageDataDirectory();

// The languages the languages file lists, in its order. Raises 5 when the
// file is missing or malformed.
ORVMYSQL_EXPORT std::vector<InstalledLanguage> InstalledLanguages();

// Makes the language that matches `locale` ("de_DE", "de-DE", "de",
// "fr_FR.UTF-8") current and loads its catalog; "C" or "POSIX" chooses the
// built-in texts, empty text returns to the program's LC_MESSAGES locale.
// Raises 5 when no installed language matches or its catalog cannot be read;
// the current language is then unchanged.
ORVMYSQL_EXPORT void SetLanguage(std::string_view locale);

// The locale of the current language ("de_DE"), empty when the built-in texts
// serve. Raises 5 when the current language's files are missing or broken.
ORVMYSQL_EXPORT std::string CurrentLanguage();

// The text of message `number` as RaiseError would use it, or, for a given
// locale, in that language (host lookup first, built-in table last). Raises
// 326 for a number in no table, 5 for a locale that matches no language.
ORVMYSQL_EXPORT std::string MessageText(int32_t number, std::string_view locale = {});

// Applies the display-name stylesheet of the current language (or of the
// language matching `locale`) to an XML document and returns the transformed
// document. With no current language the document is returned unchanged.
// Raises 5 when the document is not well-formed, or the stylesheet cannot be
// read or fails.
ORVMYSQL_EXPORT std::string TranslateDisplayNames(std::string_view xml,
                                                  std::string_view locale = {});

// Installs a host's own message lookup, asked before the catalogs; it returns
// empty text for a number it does not know. Null removes it.
ORVMYSQL_EXPORT void SetMessageLookup(std::string (*lookup)(int32_t number));

}  // namespace orvmysql
