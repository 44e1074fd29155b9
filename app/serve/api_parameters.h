#ifndef TAGWRIGHT_APP_SERVE_API_PARAMETERS_H_
#define TAGWRIGHT_APP_SERVE_API_PARAMETERS_H_

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tagwright {

// The parameters of one API call, named as the command line's long options
// ("element-name", "start-instance"), from a query string or a JSON object.
// Values are passed on as given; a name left out takes the operation's
// default, as on the command line.
class ApiParameters {
 public:
  // Takes `given` when every name is in `allowed`, none is repeated, every
  // one in `required` is there, and "start-instance" and "count-instances"
  // are whole numbers in -32768..32767. Otherwise nothing, and `refusal`
  // says why.
  template <typename Pairs>
  static std::optional<ApiParameters> from(const Pairs& given,
                                           std::initializer_list<std::string_view> allowed,
                                           std::initializer_list<std::string_view> required,
                                           std::string& refusal) {
    ApiParameters parameters;
    for (const auto& [name, value] : given) {
      if (!parameters.add(name, value, allowed, refusal)) return std::nullopt;
    }
    if (!parameters.complete(required, refusal)) return std::nullopt;
    return parameters;
  }

  // The same from the body of a POST: a JSON object whose values are texts,
  // or whole numbers for the two numeric names.
  static std::optional<ApiParameters> fromJson(const std::string& body,
                                               std::initializer_list<std::string_view> allowed,
                                               std::initializer_list<std::string_view> required,
                                               std::string& refusal);

  std::string text(const std::string& name, const char* fallback) const;
  std::int16_t number(const std::string& name, std::int16_t fallback) const;

 private:
  bool add(const std::string& name, const std::string& value,
           std::initializer_list<std::string_view> allowed, std::string& refusal);
  bool complete(std::initializer_list<std::string_view> required, std::string& refusal) const;

  std::map<std::string, std::string> values_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_API_PARAMETERS_H_
