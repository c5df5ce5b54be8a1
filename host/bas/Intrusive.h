#pragma once

#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>

/// Atomic counting: handles may be copied and dropped on any thread.
using BAS_IntrusiveThreadSafeCounterPolicy = boost::thread_safe_counter;

/// Count references inside the object: 32 bits, 0 at construction and in every copy; the last handle deletes it.
template <class T, class Policy = BAS_IntrusiveThreadSafeCounterPolicy>
using BAS_IntrusiveRefCounter = boost::intrusive_ref_counter<T, Policy>;

/// Own a share of an intrusively counted object.  Can be made from a raw pointer at any time.
template <class T> using BAS_IntrusivePtr = boost::intrusive_ptr<T>;
