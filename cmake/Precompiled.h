// The headers that nearly every file includes, parsed once for the whole build.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <coroutine>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include <fmt/core.h>
#include <nlohmann/json.hpp>
