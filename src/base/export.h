#pragma once

// What leaves a library and what stays inside it. Everything is hidden unless it carries one of these marks:
// VRL_API on the mask library's own exports, VRL_HOST_API on what a host brings, VRL_SHARED_TYPE on exception and
// interface types that both sides must see as one type.

#if defined(_WIN32)
#if defined(VRL_STATIC)
#define VRL_API
#elif defined(VRL_BUILDING)
#define VRL_API __declspec(dllexport)
#else
#define VRL_API __declspec(dllimport)
#endif
#if defined(VRL_HOST_STATIC)
#define VRL_HOST_API
#elif defined(VRL_BUILDING_HOST)
#define VRL_HOST_API __declspec(dllexport)
#else
#define VRL_HOST_API __declspec(dllimport)
#endif
#define VRL_SHARED_TYPE
#else
#define VRL_API __attribute__((visibility("default")))
#define VRL_HOST_API __attribute__((visibility("default")))
#define VRL_SHARED_TYPE __attribute__((visibility("default")))
#endif
