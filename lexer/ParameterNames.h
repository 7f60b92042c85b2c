// The parameters of a definition.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qnpp {

/// Names of parameters in the order written, kept as one text: that is all that most definitions are ever asked for.
/// The text is borrowed.
class ParameterNames {
 public:
  ParameterNames() = default;
  /// `list` holds `count` names, with a comma behind each.
  ParameterNames(std::string_view list, std::uint32_t count) : list_(list), count_(count) {}

  std::string_view list() const { return list_; }
  std::size_t size() const { return count_; }
  bool empty() const { return count_ == 0; }

  /// Calls `use` with each name.
  template <typename Use>
  void forEach(Use use) const {
    for (std::string_view rest = list_; !rest.empty();) {
      const std::size_t end = rest.find(',');
      use(rest.substr(0, end));
      rest.remove_prefix(end + 1);
    }
  }

 private:
  std::string_view list_;
  std::uint32_t count_ = 0;
};

}  // namespace qnpp
