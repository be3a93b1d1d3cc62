// What equal requests have in common: who asks, for what, with which body.
//
// A SHA-256 hash, so that neither tokens nor speech outlive their request in it, and nobody can
// make a second body that passes for the first. A pure function.
#pragma once

#include <array>
#include <functional>
#include <initializer_list>
#include <string_view>

namespace vemo::service {

using RequestKey = std::array<unsigned char, 32>;

/// The parts keep their borders: {"ab", "c"} and {"a", "bc"} have different keys.
RequestKey requestKey(std::initializer_list<std::string_view> parts);

/// A key is a hash already.
struct RequestKeyHash {
  std::size_t operator()(const RequestKey& key) const;
};

}  // namespace vemo::service
