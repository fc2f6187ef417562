// A small picture of a file's contents, for lists and previews, through the desktop's shared
// thumbnail cache, where file managers and other applications find it too (and where this
// function finds theirs).
//
// `quickLookImageURL(url, width, height)` answers the URL of a PNG thumbnail of the file at
// `url` that fits in a square of the cache size for the larger of `width` and `height` (points
// or pixels: the host scales it to what it shows). The cache follows the freedesktop.org
// thumbnail rules:
//   - It lies in User::caches() + "thumbnails/" ($XDG_CACHE_HOME/thumbnails, else
//     ~/.cache/thumbnails), in one folder per size: "normal" (128 pixels), "large" (256),
//     "x-large" (512), "xx-large" (1024). The smallest that is at least the larger requested
//     side is used; anything above 1024 gets "xx-large".
//   - A thumbnail is named by the MD5 digest, in lower-case hexadecimal, of the file's URI as
//     the desktop writes it ("file://" and the percent-encoded path, made from the standardised
//     path), with ".png".
//   - A cached thumbnail counts only when its "Thumb::URI" text is that URI and its
//     "Thumb::MTime" is the file's modification time in whole seconds (and "Thumb::Size", where
//     the writer gave one, is the file's size in bytes). A thumbnail of an older version of the
//     file, another file's under the same name, or a damaged PNG is made anew.
//   - A new thumbnail is made by the installed ThumbnailGenerator (ThumbnailGenerator.h; Qt's
//     image readers once QtPlatform::install() has run) and carries "Thumb::URI", "Thumb::MTime",
//     "Thumb::Size" and "Software". It shows what the file holds, so only its owner may read it:
//     the folders are made with mode 0700 and the file is written whole, with mode 0600, into a
//     temporary file that is then renamed into place (FileReplacement), so that no reader ever
//     sees part of one. An out-of-date thumbnail is removed first, whatever mode its writer gave
//     it.
//
// No value (and nothing written) for a file that does not exist, is not a regular file or
// cannot be read; for one that is not an image the generator can read; for a file inside the
// thumbnail cache itself (thumbnails are not made of thumbnails); for a width or height that is
// not a positive, finite number; when nothing valid is cached and no generator is installed; and
// when the cache cannot be written. Symbolic links are followed to the file they name, while the
// thumbnail is filed under the URL's own path.
//
// Any thread may ask. Making a thumbnail reads and decodes the whole image, so a host that
// shows many asks from a background queue. Two processes making the same thumbnail at once both
// write a complete one; the later rename wins.
//
//     if (auto thumbnail = Interface::quickLookImageURL(Url::fileURL(photo), 200, 150))
//         label.setPixmap(QPixmap(QString::fromStdString(thumbnail->path())));   // "large"
#pragma once

#include <optional>

#include "quoddle/Export.h"
#include "quoddle/filesystem/Url.h"

namespace quod::Interface {

[[nodiscard]] QUODDLE_EXPORT std::optional<Url> quickLookImageURL(const Url& url, double width,
                                                                  double height);

}  // namespace quod::Interface
