#pragma once

#include <vector>

#include <boost/container/vector.hpp>

/// Growable array of any type.
template <class T> using BAS_Array = std::vector<T>;

/// Growable array of plain values.  Distinct from `BAS_Array`, because both appear as overloads of one name;
/// `resize(n, boost::container::default_init)` leaves new values unset.
template <class T> using BAS_ValArray = boost::container::vector<T>;
