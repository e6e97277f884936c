#pragma once

#include <cstddef>
#include <cstdint>

#include "host/engine.h"

// The library's binding to the graphics engine: procedures are looked up by name, kept in one table per interface, and
// looked up again whenever the host's unregister count has changed.

namespace NUB_T_MT {

/// Starts the binding. False when an interface of the binding layer itself is missing; the calls below then fail.
bool StartBinding(NUBAddressProc proc);
/// Ends it: terminates every bound table and forgets the lookup procedure. Does nothing when it was never started.
void EndBinding() noexcept;

/// Bind the interface unless it is bound already.
/// @throws CNUBError  "Missing Interface"
void BindNewPathInterface();
void BindPathInterface();
void BindPainterInterface();
void BindContainerInterface();

// The procedures. A table is filled on first use.
// @throws CNUBError  component "NUB" when the engine has no such procedure or none is bound; "Missing Interface" for the
// painter's

NUBReallocProc MemoryRealloc();
NUBFreeProc MemoryFree();

GRXNewPathProc NewPath();

GRXPathCountProc PathAddRef();
GRXPathCountProc PathRelease();
GRXPathGetDataProc PathGetData();
GRXPathTransformProc PathTransform();

/// Looked up once and kept for the life of the process.
GRXOffsetPathProc GetOffsetPath();

NUBNewNullProgressProc NewNullProgress();
NUBProgressReleaseProc ProgressRelease();

TAVNewFillProc NewFill();

NUBContainerCountProc ContainerRelease();

/// The method of the painters that share this one's signature.
/// @throws CNUBError  "invalid container" for null, "couldn't get signature", or component "NUB" for a missing method
PIVGetInfoProc PainterGetInfo(NUBContainer* painter);

}  // namespace NUB_T_MT
