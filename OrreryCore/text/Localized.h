// The localized-text seam: every text of the core that a person reads goes
// through localized(), as its English source text and a comment for the
// translators.
//
// The core cannot depend on Qt, so it only names the texts; the application
// installs a Translator (bound to Qt's translator) at start-up. Without one,
// the English source text is the result, which is what tests compare with.
// Placeholders are Qt-style "%1", "%2", …, filled by arg().
//
// Thread rules: install the translator once at start-up, before any other
// thread asks for a text; localized() may then be called from any thread.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace orrery::text {

// (source text, translator comment) -> the text to show.
using Translator = std::function<std::string(std::string_view source, std::string_view comment)>;

// Installs the translator; an empty function restores the English source.
void setTranslator(Translator translator);

std::string localized(std::string_view source, std::string_view comment);

// Replaces %1 … %9 in text by the arguments in order; a placeholder
// without an argument stays as it is. Arguments are not scanned again, so a
// name that itself contains "%2" is shown literally.
std::string arg(std::string_view text, std::initializer_list<std::string_view> arguments);

}  // namespace orrery::text
