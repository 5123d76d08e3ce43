// The parts of a SYSTEMTIME, less the day of the week, which nobody tells.
#include "layout/file_time.h"

#include <cstring>
#include <iterator>

#include "layout/bytes.h"

namespace qv::layout {
namespace {

constexpr std::uint16_t coredll::SYSTEMTIME::*kParts[] = {
    &coredll::SYSTEMTIME::wYear,        &coredll::SYSTEMTIME::wMonth,  &coredll::SYSTEMTIME::wDay,
    &coredll::SYSTEMTIME::wHour,        &coredll::SYSTEMTIME::wMinute, &coredll::SYSTEMTIME::wSecond,
    &coredll::SYSTEMTIME::wMilliseconds};
constexpr std::size_t kPartSize = 4;

coredll::SYSTEMTIME LoadParts(const std::uint8_t* numbers, std::size_t size) {
  coredll::SYSTEMTIME time = {};
  for (std::size_t i = 0; i < size / kPartSize; ++i) {
    time.*kParts[i] = static_cast<std::uint16_t>(LoadNumber(numbers + i * kPartSize, kPartSize));
  }
  return time;
}

void PutParts(const coredll::SYSTEMTIME& time, std::uint8_t* numbers, std::size_t size) {
  for (std::size_t i = 0; i < size / kPartSize; ++i) {
    StoreNumber(numbers + i * kPartSize, kPartSize, time.*kParts[i]);
  }
}

}  // namespace

coredll::FILETIME ToFileTime(const coredll::SYSTEMTIME& time) {
  coredll::FILETIME file_time = {};
  return coredll::SystemTimeToFileTime(&time, &file_time) != 0 ? file_time : coredll::FILETIME{};
}

coredll::FILETIME ToFileTime(std::span<const std::uint32_t> parts) {
  return ToFileTime(LoadParts(reinterpret_cast<const std::uint8_t*>(parts.data()), parts.size_bytes()));
}

void PutFileTimeNumbers(const std::uint8_t* file_time, std::uint8_t* numbers, std::size_t size) {
  const coredll::FILETIME time = {LoadNumber(file_time, 4), LoadNumber(file_time + 4, 4)};
  coredll::SYSTEMTIME system_time = {};
  if (coredll::FileTimeToSystemTime(&time, &system_time) == 0) system_time = {};
  PutParts(system_time, numbers, size);
}

void PutFileTime(const std::uint8_t* numbers, std::size_t size, std::uint8_t* file_time) {
  const coredll::FILETIME time = ToFileTime(LoadParts(numbers, size));
  StoreNumber(file_time, 4, time.dwLowDateTime);
  StoreNumber(file_time + 4, 4, time.dwHighDateTime);
}

void PutSystemTimeNumbers(const std::uint8_t* system_time, std::uint8_t* numbers, std::size_t size) {
  coredll::SYSTEMTIME time;
  std::memcpy(&time, system_time, sizeof(time));
  PutParts(time, numbers, size);
}

void PutSystemTime(const std::uint8_t* numbers, std::size_t size, std::uint8_t* system_time) {
  const coredll::SYSTEMTIME time = LoadParts(numbers, size);
  std::memcpy(system_time, &time, sizeof(time));
}

}  // namespace qv::layout
