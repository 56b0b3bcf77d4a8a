// ---- The live page.
