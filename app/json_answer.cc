#include "json_answer.h"

#include <nlohmann/json.hpp>

#include "tagwright/tagwright.h"

namespace tagwright {
namespace {

void replaceRawBytesIn(nlohmann::ordered_json& value) {
  if (value.is_string()) {
    value = Tagwright::replaceRawBytes(value.get_ref<const std::string&>());
  } else if (value.is_structured()) {
    for (auto& element : value) replaceRawBytesIn(element);
  }
}

std::string jsonText(nlohmann::ordered_json value) {
  replaceRawBytesIn(value);
  return value.dump();
}

}  // namespace

std::string textAnswerJson(const std::string& result, int matchesFound) {
  nlohmann::ordered_json object;
  object["result"] = result;
  object["matchesFound"] = matchesFound;
  return jsonText(std::move(object));
}

std::string writeAnswerJson(int result, const std::string& errorResult) {
  nlohmann::ordered_json object;
  object["result"] = result;
  object["errorResult"] = errorResult;
  return jsonText(std::move(object));
}

}  // namespace tagwright
