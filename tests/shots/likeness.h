#pragma once

class QImage;

/// The share of blocks, 16 by 16 pixels each, in which two pictures of one size differ in their mean brightness by more
/// than another rendering of the same letters makes up.
///
/// Versions of Qt and of the font renderer shade the edges of letters and frames differently, which changes most pixels
/// of a text by some shades and the mean of a block hardly; another row or control in a place changes whole blocks, and
/// all blocks behind it. A word for another of the same length may go unseen: texts are compared as such.
double shareOfOtherBlocks(const QImage &left, const QImage &right);

/// True for a picture that is of one colour, but for a frame.
bool isBlank(const QImage &picture);
