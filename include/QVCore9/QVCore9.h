// SPDX-License-Identifier: Apache-2.0
/** @file
 *  The core library that effects are written against: images, geometry, log, progress, threads.
 *
 *  Coordinates are those of an image's own bounds, whose origin may lie anywhere; y points down.
 *  An operation with a status returns 0 for success and one of the codes of ::QVStatus otherwise.
 *  Functions that take an image accept null and then answer 0, an empty rectangle or
 *  kQVStatusBadArgument. Reference counts may be changed from any thread. */
#ifndef QVCORE9_QVCORE9_H
#define QVCORE9_QVCORE9_H

#include <QVCore9/CoreFoundation.h>
#include <QVCore9/QVExport.h>
#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The status codes. A value that is not listed comes from a core library of the host's own and is
 *  passed on unchanged. */
enum QVStatus {
  kQVStatusSuccess = 0,             /**< done */
  kQVStatusUnknown = 1001,          /**< unknown failure */
  kQVStatusUnknown2 = 1002,         /**< unknown failure or out of memory, second form */
  kQVStatusCannotBeMet = 1003,      /**< the request can't be met: memory, or too little data */
  kQVStatusUnsupportedOlder = 1004, /**< unsupported image, older form */
  kQVStatusBadArgument = 1005,      /**< bad argument, or a row that can't be had */
  kQVStatusCancelled = 1007,        /**< cancelled by the host */
  kQVStatusUnsupported = 1020,      /**< unsupported image */
  kQVStatusUnknown3 = -1,           /**< unknown failure, third form */
  kQVStatusOutOfMemory = -108       /**< out of memory */
};

/** Colour spaces that effects tell apart; an image may carry any other value. */
enum QVColorSpace {
  kQVColorSpaceGray = 1, /**< one colour sample a pixel; also masks */
  kQVColorSpaceRGB = 2   /**< three colour samples a pixel: R, G, B */
};

/** Image types that effects tell apart; an image may carry any other value. */
enum QVImageType {
  kQVImageTypePlain = 0,       /**< the type of a new image */
  kQVImageTypeInvertedMask = 6 /**< a mask that is read upside down: s counts as 1 - s / max */
};

/** Columns x to x + width - 1 and rows y to y + height - 1. */
typedef struct QVRect {
  int x;      /**< left column */
  int y;      /**< top row */
  int width;  /**< number of columns */
  int height; /**< number of rows */
} QVRect;

/** A pixel's place, or an offset in pixels. */
typedef struct QVPoint {
  int x; /**< column */
  int y; /**< row */
} QVPoint;

/** Maps a point by x' = a*x + b*y + tx and y' = c*x + d*y + ty. */
typedef struct QVAffineTransform {
  float a;  /**< x to x' */
  float b;  /**< y to x' */
  float c;  /**< x to y' */
  float d;  /**< y to y' */
  float tx; /**< added to x' */
  float ty; /**< added to y' */
} QVAffineTransform;

/** A reference-counted image: interleaved samples of 8 or 16 bits or 32-bit floats, full scale 255,
 *  65535 or 1.0; colour samples first (R, G, B), the transparency sample last. */
typedef struct __QVImage __QVImage;
/** A receiver of progress. */
typedef struct __QVProgress __QVProgress;
/** A mutex. */
typedef struct __QVMutex __QVMutex;
/** A condition variable. */
typedef struct __QVCondition __QVCondition;

/** @name Images: creation and lifetime
 *  @{ */

/** Makes an image in memory. Its samples are undefined.
 *  @param bounds       place and size; a size may be 0. x + width, y + height and the bytes of
 *                     a row must be ints.
 *  @param depth        bits a sample: 8, 16 or 32.
 *  @param planes       samples a pixel, transparency included: 1 to 64.
 *  @param colorSpace   see ::QVColorSpace; any value is carried.
 *  @param transparency transparency planes among the planes: 0 or 1; a colour plane must remain.
 *  @param dataSource   any value, carried along.
 *  @param result       receives the image with one reference, or null on failure.
 *  @return 0; kQVStatusUnsupported for depth, planes or transparency; kQVStatusBadArgument for
 *          bounds or a null result; kQVStatusOutOfMemory. */
QVCORE9_API int QVImageCreateWithParams2(QVRect bounds, int depth, int planes, int colorSpace,
                                         int transparency, int dataSource, __QVImage** result);

/** Makes an image in memory of the same attributes and samples.
 *  @return 0; kQVStatusBadArgument for null; kQVStatusOutOfMemory; the status of a failed read. */
QVCORE9_API int QVImageCreateCopy(__QVImage* source, __QVImage** result);

/** Adds a reference. */
QVCORE9_API void QVImageRetain(__QVImage* image);

/** Drops a reference; the last one destroys the image. */
QVCORE9_API void QVImageRelease(__QVImage* image);

/** Sets every sample, transparency too, to a value on the sample's own scale, held to its range at
 *  8 and 16 bits. */
QVCORE9_API void QVImageFill(__QVImage* image, int value);

/** @}
 *  @name Images: samples
 *  @{ */

/** Address of the sample at the bounds' top left corner, valid until the matching
 *  QVImageUnlockBuffer(); null for an image that isn't held in memory. May be nested. */
QVCORE9_API void* QVImageLockBuffer(__QVImage* image);

/** Ends one lock that gave an address. */
QVCORE9_API void QVImageUnlockBuffer(__QVImage* image);

/** Copies the samples of some planes of a rectangle into a buffer, interleaved, holding only those
 *  planes.
 *  @param image      any image.
 *  @param rect       inside the bounds; an empty one copies nothing.
 *  @param firstPlane first plane copied, from 0.
 *  @param lastPlane  last plane copied; -1 is the image's last.
 *  @param buffer     receives the samples.
 *  @param rowBytes   the buffer's stride; -1 for tightly packed. Not looked at for a single row.
 *  @param reserved   0.
 *  @return 0; kQVStatusBadArgument for a rectangle or planes outside the image, a stride too short
 *          or null; the status of a callback that failed. */
QVCORE9_API int QVImageRead2(__QVImage* image, QVRect rect, int firstPlane, int lastPlane,
                             void* buffer, int rowBytes, int reserved);

/** The reverse of QVImageRead2(): from the buffer into the image. Planes outside firstPlane to
 *  lastPlane stay as they are. */
QVCORE9_API int QVImageWrite2(__QVImage* image, QVRect rect, int firstPlane, int lastPlane,
                              const void* buffer, int rowBytes, int reserved);

/** @}
 *  @name Images: attributes
 *  @{ */

/** Place and size. */
QVCORE9_API QVRect QVImageGetBounds(__QVImage* image);
/** Width of the bounds. */
QVCORE9_API int QVImageGetWidth(__QVImage* image);
/** Height of the bounds. */
QVCORE9_API int QVImageGetHeight(__QVImage* image);
/** Bits a sample: 8, 16 or 32. */
QVCORE9_API int QVImageGetDepth(__QVImage* image);
/** Samples a pixel, transparency included. */
QVCORE9_API int QVImageGetNumPlanes(__QVImage* image);
/** Transparency planes among the planes: 0 or 1. */
QVCORE9_API int QVImageGetTransparency(__QVImage* image);
/** Bytes a sample: 1, 2 or 4. */
QVCORE9_API int QVImageGetPlaneBytes(__QVImage* image);
/** Bytes a pixel. */
QVCORE9_API int QVImageGetColBytes(__QVImage* image);
/** Bytes from one row to the next, at least width times bytes a pixel. */
QVCORE9_API int QVImageGetRowBytes(__QVImage* image);
/** Colour space, see ::QVColorSpace. */
QVCORE9_API int QVImageGetColorSpaceType(__QVImage* image);
/** Image type, see ::QVImageType. */
QVCORE9_API int QVImageGetType(__QVImage* image);
/** The data source given at creation. */
QVCORE9_API int QVImageGetDataSourceType(__QVImage* image);

/** @}
 *  @name Geometry
 *  Results outside the range of int are held to it.
 *  @{ */

/** The record of these values. */
QVCORE9_API QVRect QVRectMake(int x, int y, int width, int height);

/** The common part; width or height is 0 when there is none. */
QVCORE9_API QVRect QVRectIntersect(QVRect a, QVRect b);

/** Grown by amount on all four sides; a negative amount shrinks. */
QVCORE9_API QVRect QVRectOutset(QVRect rect, int amount);

/** The record of these values. */
QVCORE9_API QVPoint QVPointMake(int x, int y);

/** Whether the point lies inside, the right and bottom edges excluded. */
QVCORE9_API bool QVPointInRect(QVPoint point, QVRect rect);

/** Scaling, then rotation about the pivot, then the translation.
 *  @param angle degrees; a positive angle turns the x axis towards the y axis. Multiples of 90 are
 *               exact.
 *  @param scaleX,scaleY         factors along the unturned axes.
 *  @param pivotX,pivotY         the point that scaling and rotation leave in place.
 *  @param translateX,translateY added at the end, pixels. */
QVCORE9_API QVAffineTransform QVAffineTransformMake(float angle, float scaleX, float scaleY,
                                                    float pivotX, float pivotY, float translateX,
                                                    float translateY);

/** Carries rectangle `from` onto rectangle `to`, centre on centre.
 *
 *  `from` is mirrored and turned; the turned size is then fitted to `to` and multiplied by the
 *  scales.
 *  @param from,to  rectangles; an empty `from` gives a transform to the centre of `to`.
 *  @param mirrorX  left and right exchanged.
 *  @param mirrorY  top and bottom exchanged.
 *  @param scaleX   further factor along the x axis of `to`.
 *  @param scaleY   further factor along the y axis of `to`.
 *  @param rotation degrees, as in QVAffineTransformMake().
 *  @param keepProportions one factor for both axes, the larger, so that `to` is covered. */
QVCORE9_API QVAffineTransform QVAffineTransformMakeResize(QVRect from, QVRect to, bool mirrorX,
                                                          bool mirrorY, float scaleX, float scaleY,
                                                          int rotation, bool keepProportions);

/** The inverse; all zeros when there is none. */
QVCORE9_API QVAffineTransform QVAffineTransformInvert(QVAffineTransform transform);

/** The smallest integer rectangle that holds the images of the rectangle's four corners. */
QVCORE9_API QVRect QVAffineTransformTransformRect(QVRect rect, QVAffineTransform transform);

/** @}
 *  @name Log
 *  @{ */

/** Records a failure.
 *  @param code the status.
 *  @param path source file from the library's root, without extension.
 *  @param line line in it. */
QVCORE9_API void QVLogEvent(int code, const char* path, int line);

/** Writes a line of text, formatted as printf() does; an end of line at its end is dropped, and
 *  what is longer than 1023 bytes is cut. */
QVCORE9_API void QVLogUTF8(const char* format, ...) __attribute__((format(printf, 1, 2)));

/** @}
 *  @name Progress
 *  A null receiver is ignored.
 *  @{ */

/** Opens a stage whose positions run from 1 to total. */
QVCORE9_API void QVProgressDoProgressBeginStage(__QVProgress* progress, int reserved,
                                                CFStringRef title, int total);
/** Reports the position within the stage. */
QVCORE9_API void QVProgressDoProgressUpdateStage(__QVProgress* progress, int value);
/** Closes the stage. */
QVCORE9_API void QVProgressDoProgressEndStage(__QVProgress* progress);

/** @}
 *  @name Threads
 *  Making a mutex or a condition gives null when memory is out.
 *  @{ */

/** Logical processors that this process may use, at least 1. */
QVCORE9_API int QVProcessGetNumProcessors(void);

QVCORE9_API __QVMutex* QVMutexCreate(void);        /**< Makes a mutex. */
QVCORE9_API void QVMutexRelease(__QVMutex* mutex); /**< Destroys an unlocked mutex. */
QVCORE9_API void QVMutexLock(__QVMutex* mutex);    /**< Waits for the mutex and takes it. */
QVCORE9_API void QVMutexUnlock(__QVMutex* mutex);  /**< Gives the mutex back. */

QVCORE9_API __QVCondition* QVConditionCreate(void);            /**< Makes a condition. */
QVCORE9_API void QVConditionRelease(__QVCondition* condition); /**< Destroys it; nobody waits. */
/** Gives the mutex back and sleeps until a signal, then takes the mutex again. May also wake
 *  without a signal: the caller tests what it waits for in a loop. */
QVCORE9_API void QVConditionWait(__QVCondition* condition, __QVMutex* mutex);
/** Wakes one waiter. */
QVCORE9_API void QVConditionSignal(__QVCondition* condition);

/** @} */

/** The callbacks of an array of images: retained when appended, released when the array goes. */
QVCORE9_API const CFArrayCallBacks* QVUtilsGetArrayCallbacks(void);

#ifdef __cplusplus
}
#include <QVCore9/QVTask.h>
#endif

#endif
