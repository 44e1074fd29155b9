#include "serve/api_parameters.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

namespace tagwright {
namespace {

bool isNumeric(std::string_view name) {
  return name == "start-instance" || name == "count-instances";
}

std::optional<std::int16_t> wholeNumber(std::string_view text) {
  if (!text.empty() && text[0] == '+') text.remove_prefix(1);
  int value = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size() || value < -32768 ||
      value > 32767) {
    return std::nullopt;
  }
  return static_cast<std::int16_t>(value);
}

}  // namespace

bool ApiParameters::add(const std::string& name, const std::string& value,
                        std::initializer_list<std::string_view> allowed, std::string& refusal) {
  if (std::find(allowed.begin(), allowed.end(), name) == allowed.end()) {
    refusal = "unknown parameter \"" + name + "\"";
    return false;
  }
  if (isNumeric(name) && !wholeNumber(value)) {
    refusal = name + " must be a whole number from -32768 to 32767";
    return false;
  }
  if (!values_.emplace(name, value).second) {
    refusal = "parameter \"" + name + "\" is given twice";
    return false;
  }
  return true;
}

bool ApiParameters::complete(std::initializer_list<std::string_view> required,
                             std::string& refusal) const {
  for (std::string_view name : required) {
    if (!values_.contains(std::string(name))) {
      refusal = "parameter \"" + std::string(name) + "\" is required";
      return false;
    }
  }
  return true;
}

std::optional<ApiParameters> ApiParameters::fromJson(
    const std::string& body, std::initializer_list<std::string_view> allowed,
    std::initializer_list<std::string_view> required, std::string& refusal) {
  nlohmann::json object = nlohmann::json::parse(body, nullptr, false);
  if (!object.is_object()) {
    refusal = "the body must be a JSON object";
    return std::nullopt;
  }
  ApiParameters parameters;
  for (const auto& [name, value] : object.items()) {
    std::string text;
    if (value.is_string()) {
      text = value.get<std::string>();
    } else if (value.is_number_integer() && isNumeric(name)) {
      text = value.dump();
    } else {
      refusal = "parameter \"" + name + "\" must be a " + (isNumeric(name) ? "number" : "text");
      return std::nullopt;
    }
    if (!parameters.add(name, text, allowed, refusal)) return std::nullopt;
  }
  if (!parameters.complete(required, refusal)) return std::nullopt;
  return parameters;
}

std::string ApiParameters::text(const std::string& name, const char* fallback) const {
  auto found = values_.find(name);
  return found != values_.end() ? found->second : fallback;
}

std::int16_t ApiParameters::number(const std::string& name, std::int16_t fallback) const {
  auto found = values_.find(name);
  return found != values_.end() ? *wholeNumber(found->second) : fallback;
}

}  // namespace tagwright
