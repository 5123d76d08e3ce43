// The parts of a SYSTEMTIME, less the day of the week, which nobody tells.
#include "layout/file_time.h"

#include <iterator>

#include "layout/bytes.h"

namespace qv::layout {
namespace {

constexpr std::uint16_t coredll::SYSTEMTIME::*kParts[] = {
    &coredll::SYSTEMTIME::wYear,        &coredll::SYSTEMTIME::wMonth,  &coredll::SYSTEMTIME::wDay,
    &coredll::SYSTEMTIME::wHour,        &coredll::SYSTEMTIME::wMinute, &coredll::SYSTEMTIME::wSecond,
    &coredll::SYSTEMTIME::wMilliseconds};
constexpr std::size_t kPartSize = 4;

}  // namespace

coredll::FILETIME ToFileTime(const coredll::SYSTEMTIME& time) {
  coredll::FILETIME file_time = {};
  return coredll::SystemTimeToFileTime(&time, &file_time) != 0 ? file_time : coredll::FILETIME{};
}

coredll::FILETIME ToFileTime(std::span<const std::uint32_t> parts) {
  coredll::SYSTEMTIME time = {};
  for (std::size_t i = 0; i < parts.size(); ++i) time.*kParts[i] = static_cast<std::uint16_t>(parts[i]);
  return ToFileTime(time);
}

void PutFileTimeNumbers(const std::uint8_t* file_time, std::uint8_t* numbers, std::size_t size) {
  const coredll::FILETIME time = {LoadNumber(file_time, 4), LoadNumber(file_time + 4, 4)};
  coredll::SYSTEMTIME system_time = {};
  if (coredll::FileTimeToSystemTime(&time, &system_time) == 0) system_time = {};
  for (std::size_t i = 0; i < size / kPartSize; ++i) {
    StoreNumber(numbers + i * kPartSize, kPartSize, system_time.*kParts[i]);
  }
}

void PutFileTime(const std::uint8_t* numbers, std::size_t size, std::uint8_t* file_time) {
  std::uint32_t parts[std::size(kParts)] = {};
  const std::size_t count = size / kPartSize;
  for (std::size_t i = 0; i < count; ++i) parts[i] = LoadNumber(numbers + i * kPartSize, kPartSize);
  const coredll::FILETIME time = ToFileTime(std::span(parts, count));
  StoreNumber(file_time, 4, time.dwLowDateTime);
  StoreNumber(file_time + 4, 4, time.dwHighDateTime);
}

}  // namespace qv::layout
