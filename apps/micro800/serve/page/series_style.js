// How the lines of the trend differ: each by its colour, and by its dashes for those who see no colours.

export const kMostSeries = 8;

const kDashes = [null, [7, 3], [2, 2], [9, 3, 2, 3]];

/** Colour and dashes of the series at this place. */
export function styleOf(place) {
    const colour = getComputedStyle(document.body).getPropertyValue(`--series-${place % kMostSeries}`).trim();
    return { colour, dash: kDashes[Math.floor(place / 2) % kDashes.length] };
}
