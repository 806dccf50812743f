// TPodArray: a growable array of trivially copyable elements, for the large tables
// the recalculation chain builds by appending, one entry per formula or reference.
// It grows with realloc, which moves a large block by remapping its pages where a
// std::vector copies its contents into fresh ones: a table built by appending then
// touches each page once, not twice, and the first touch of a page is a fault that
// costs more than filling it.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>

template <class T>
class TPodArray {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>,
                "elements are moved as bytes");

 public:
  TPodArray() = default;
  ~TPodArray() { std::free(m_pData); }
  TPodArray(const TPodArray&) = delete;
  TPodArray& operator=(const TPodArray&) = delete;
  TPodArray(TPodArray&& other) noexcept
      : m_pData(other.m_pData), m_nSize(other.m_nSize), m_nCapacity(other.m_nCapacity) {
    other.m_pData = nullptr;
    other.m_nSize = other.m_nCapacity = 0;
  }
  TPodArray& operator=(TPodArray&& other) noexcept {
    if (this != &other) {
      std::free(m_pData);
      m_pData = other.m_pData;
      m_nSize = other.m_nSize;
      m_nCapacity = other.m_nCapacity;
      other.m_pData = nullptr;
      other.m_nSize = other.m_nCapacity = 0;
    }
    return *this;
  }

  size_t size() const { return m_nSize; }
  bool empty() const { return m_nSize == 0; }
  T* data() { return m_pData; }
  const T* data() const { return m_pData; }
  T* begin() { return m_pData; }
  T* end() { return m_pData + m_nSize; }
  const T* begin() const { return m_pData; }
  const T* end() const { return m_pData + m_nSize; }
  T& operator[](size_t i) { return m_pData[i]; }
  const T& operator[](size_t i) const { return m_pData[i]; }
  T& back() { return m_pData[m_nSize - 1]; }

  // Throws std::bad_alloc.
  void push_back(const T& value) {
    if (m_nSize == m_nCapacity) Grow(m_nSize + 1);
    m_pData[m_nSize++] = value;
  }
  // A new last element, value-initialised. Throws std::bad_alloc.
  T& emplace_back() {
    push_back(T{});
    return back();
  }
  void pop_back() { m_nSize--; }
  // n elements; those beyond the old size are left unset. Throws std::bad_alloc.
  void SetSize(size_t n) {
    if (n > m_nCapacity) Grow(n);
    m_nSize = n;
  }
  // Keeps the block for the next build.
  void clear() { m_nSize = 0; }
  // Frees the block.
  void Release() {
    std::free(m_pData);
    m_pData = nullptr;
    m_nSize = m_nCapacity = 0;
  }

 private:
  void Grow(size_t nMin) {
    size_t nCapacity = m_nCapacity < 16 ? 16 : 2 * m_nCapacity;
    if (nCapacity < nMin) nCapacity = nMin;
    void* p = std::realloc(m_pData, nCapacity * sizeof(T));
    if (!p) throw std::bad_alloc();
    m_pData = static_cast<T*>(p);
    m_nCapacity = nCapacity;
  }

  T* m_pData = nullptr;  // owned
  size_t m_nSize = 0;
  size_t m_nCapacity = 0;
};
