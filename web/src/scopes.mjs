// What was measured: histograms and the grid of means.

const colours = ['--red', '--green', '--blue'];

/** Three curves over 256 bins. Heights go by the square root, so that small counts are seen. */
export function drawHistogram(canvas, histograms) {
  const style = getComputedStyle(canvas), to = canvas.getContext('2d');
  const { width, height } = canvas;
  to.clearRect(0, 0, width, height);
  const most = Math.max(1, ...histograms.map((h) => {
    let top = 0;
    for (let i = 1; i < 255; ++i) if (h[i] > top) top = h[i]; // the ends stand for what is cut
    return top;
  }));
  to.globalCompositeOperation = style.getPropertyValue('--blend').trim() || 'source-over';
  histograms.forEach((h, c) => {
    to.fillStyle = style.getPropertyValue(colours[c]);
    to.globalAlpha = 0.75;
    to.beginPath();
    to.moveTo(0, height);
    for (let i = 0; i < 256; ++i) {
      const y = height - Math.min(1, Math.sqrt(h[i] / most)) * (height - 2);
      to.lineTo(i / 256 * width, y);
      to.lineTo((i + 1) / 256 * width, y);
    }
    to.lineTo(width, height);
    to.fill();
  });
  to.globalAlpha = 1;
  to.globalCompositeOperation = 'source-over';
}

/** Histograms of a picture's pixels, every fourth row and column of large ones. */
export function countPixels(pixels, width, height) {
  const all = [new Uint32Array(256), new Uint32Array(256), new Uint32Array(256)];
  const [r, g, b] = all, step = width * height > 400000 ? 4 : 2;
  for (let y = 0; y < height; y += step) {
    for (let i = 4 * y * width, end = 4 * (y + 1) * width; i < end; i += 4 * step) {
      ++r[pixels[i]];
      ++g[pixels[i + 1]];
      ++b[pixels[i + 2]];
    }
  }
  return all;
}

// Black on light, white on dark: whichever stands out more, by the eye's measure of light.
const inkOn = (rgb) => {
  const [r, g, b] = rgb.map((v) => (v / 255 <= 0.04045 ? v / 255 / 12.92 : ((v / 255 + 0.055) / 1.055) ** 2.4));
  return 0.2126 * r + 0.7152 * g + 0.0722 * b > 0.179 ? '#000' : '#fff';
};

/** The 8 x 6 cells as a table: each cell in its colour, its means as its title. */
export function buildGrid(table) {
  const cells = [];
  for (let row = 0; row < 6; ++row) {
    const line = table.insertRow();
    for (let column = 0; column < 8; ++column) cells.push(line.insertCell());
  }
  const shown = [];
  return (means) => means.forEach(([r, g, b], i) => {
    const text = `R ${r.toFixed(1)}, G ${g.toFixed(1)}, B ${b.toFixed(1)}`;
    if (shown[i] === text) return;
    shown[i] = text;
    cells[i].style.background = `rgb(${r}, ${g}, ${b})`;
    cells[i].style.color = inkOn([r, g, b]);
    cells[i].textContent = Math.round((r + 2 * g + b) / 4);
    cells[i].title = text;
    cells[i].setAttribute('aria-label', text);
  });
}
