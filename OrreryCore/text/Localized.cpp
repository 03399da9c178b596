#include "OrreryCore/text/Localized.h"

#include <mutex>
#include <vector>

namespace orrery::text {

namespace {

std::mutex& translatorMutex() {
  static std::mutex mutex;
  return mutex;
}

Translator& installedTranslator() {
  static Translator translator;
  return translator;
}

}  // namespace

void setTranslator(Translator translator) {
  std::lock_guard lock(translatorMutex());
  installedTranslator() = std::move(translator);
}

std::string localized(std::string_view source, std::string_view comment) {
  Translator translator;
  {
    std::lock_guard lock(translatorMutex());
    translator = installedTranslator();
  }
  if (!translator) return std::string(source);
  return translator(source, comment);
}

std::string arg(std::string_view text, std::initializer_list<std::string_view> arguments) {
  const std::vector<std::string_view> values(arguments);
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 1 < text.size() && text[i + 1] >= '1' && text[i + 1] <= '9') {
      const auto index = static_cast<std::size_t>(text[i + 1] - '1');
      if (index < values.size()) {
        out.append(values[index]);
        ++i;
        continue;
      }
    }
    out.push_back(text[i]);
  }
  return out;
}

}  // namespace orrery::text
