// SPDX-License-Identifier: Apache-2.0
/** @file
 *  What only a host calls: images over its own memory or behind callbacks, the log, progress. */
#ifndef QVCORE9_QVIMAGEHOST_H
#define QVCORE9_QVIMAGEHOST_H

#include <QVCore9/QVCore9.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The ways to the samples of an image that isn't held in memory. Each transfer returns 0 or a
 *  status that the effect passes on. The rectangle lies inside the bounds and has pixels; the
 *  planes run from firstPlane to lastPlane, both included, and the buffer holds only those,
 *  interleaved, with rowBytes from row to row. */
typedef struct QVImageCallbacks {
  /** Fills the buffer from the image. */
  int (*read)(void* context, QVRect rect, int firstPlane, int lastPlane, void* buffer,
              int rowBytes);
  /** Fills the image from the buffer; the other planes stay as they are. */
  int (*write)(void* context, QVRect rect, int firstPlane, int lastPlane, const void* buffer,
               int rowBytes);
  /** Called once, when the image goes. May be null. */
  void (*release)(void* context);
} QVImageCallbacks;

/** Makes an image over memory that the host owns; nothing is copied.
 *  @param bounds,depth,planes,colorSpace,transparency as in QVImageCreateWithParams2(); the data
 *                  source is 0.
 *  @param samples  the sample at the bounds' top left corner, aligned to a sample; must outlive the
 *                  image.
 *  @param rowBytes bytes from row to row: at least width times bytes a pixel, a multiple of the
 *                  bytes a sample.
 *  @param result   receives the image with one reference, or null on failure.
 *  @return as QVImageCreateWithParams2(); kQVStatusBadArgument also for null samples, a bad stride
 *          or misaligned samples. */
QVCORE9_API int QVImageCreateWithBuffer(QVRect bounds, int depth, int planes, int colorSpace,
                                        int transparency, void* samples, int rowBytes,
                                        __QVImage** result);

/** Makes an image whose samples are reached through callbacks only; QVImageLockBuffer() gives null
 *  on it.
 *  @param bounds,depth,planes,colorSpace,transparency as in QVImageCreateWithParams2(); the data
 *                   source is 0.
 *  @param callbacks copied; read and write must be there.
 *  @param context   handed to each callback. On failure release isn't called.
 *  @param result    receives the image with one reference, or null on failure.
 *  @return as QVImageCreateWithParams2(); kQVStatusBadArgument also for missing callbacks. */
QVCORE9_API int QVImageCreateWithCallbacks(QVRect bounds, int depth, int planes, int colorSpace,
                                           int transparency, const QVImageCallbacks* callbacks,
                                           void* context, __QVImage** result);

/** Sets the image type, see ::QVImageType. */
QVCORE9_API void QVImageSetType(__QVImage* image, int type);

/** Where the log goes. */
typedef struct QVLogHandler {
  /** A failure, see QVLogEvent(). May be null. */
  void (*event)(void* context, int code, const char* path, int line);
  /** A line of text without its end. May be null. */
  void (*text)(void* context, const char* line);
} QVLogHandler;

/** Sends the log to a handler, which may be called from any thread; null sends it to standard
 *  error, as at the start. No effect may be running while the handler changes,
 *  since it may still call the old one.
 *  @param handler copied.
 *  @param context handed to each call. */
QVCORE9_API void QVLogSetHandler(const QVLogHandler* handler, void* context);

/** What a progress receiver calls; each may be null. */
typedef struct QVProgressCallbacks {
  /** A stage opens; its positions run from 1 to total. The title is UTF-8. */
  void (*beginStage)(void* context, const char* title, int total);
  /** The position within the stage. */
  void (*updateStage)(void* context, int value);
  /** The stage closes. */
  void (*endStage)(void* context);
  /** Called once, when the receiver goes. */
  void (*release)(void* context);
} QVProgressCallbacks;

/** Makes a progress receiver.
 *  @param callbacks copied.
 *  @param context   handed to each callback. On failure release isn't called.
 *  @param result    receives it, or null on failure; end it with QVProgressRelease().
 *  @return 0; kQVStatusBadArgument for null; kQVStatusOutOfMemory. */
QVCORE9_API int QVProgressCreate(const QVProgressCallbacks* callbacks, void* context,
                                 __QVProgress** result);

/** Ends a progress receiver. */
QVCORE9_API void QVProgressRelease(__QVProgress* progress);

#ifdef __cplusplus
}
#endif

#endif
