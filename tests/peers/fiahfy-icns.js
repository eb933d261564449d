// Usage: node fiahfy-icns.js OUT.icns SOURCE.png...
// Writes every element type @fiahfy/icns supports for which a source of the
// type's size is given (packed RGB with a mask, 'ARGB' and PNG elements).
'use strict';
const fs = require('fs');
const { PNG } = require('pngjs');
const { Icns, IcnsImage } = require('@fiahfy/icns');

const [out, ...sources] = process.argv.slice(2);
const bySize = new Map();
for (const source of sources) {
  const buffer = fs.readFileSync(source);
  bySize.set(PNG.sync.read(buffer).width, buffer);
}
const icns = new Icns();
for (const { osType, size } of Icns.supportedIconTypes) {
  if (bySize.has(size)) icns.append(IcnsImage.fromPNG(bySize.get(size), osType));
}
fs.writeFileSync(out, icns.data);
