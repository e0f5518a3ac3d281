// Messages as the host sends them, for tests and pictures that need no engine.

export const status = (text) => ({ type: "status", text });

export const progress = (percent, more) => ({ type: "progress", percent, downloadedBytes: 5, totalBytes: 10, speedBps: 1048576,
  currentFile: "data/a.bin", fileIndex: 1, fileCount: 2, ...more });

export const verdict = { type: "check", mode: "verify", done: true, total: 18231, ok: 18226, missing: 3, corrupt: 2, bytes: 734003200,
  samples: ["data/monde/ciel/nuages_042.bin", "data/sons/foret.bin", "data/sons/mer.bin"] };

const row = (id, label, def, min, max, step, group, more) =>
  ({ id, label, hint: null, def, min, max, step, kind: 1, group, ...more });

const tuneRows = [
  row("exposure", "Exposition", 0.96, 0.2, 3, 0.01, 0, { hint: "Luminosite generale de la scene avant les couleurs." }),
  row("fxaa", "Anticrenelage", 1, 0, 1, 1, 0, { kind: 0, hint: "Adoucit les bords en escalier. Cout tres faible." }),
  row("aniso", "Filtrage anisotrope", 14, 1, 16, 1, 1),
  row("shadowbias", "Decalage des ombres", 0.002, 0, 0.02, 0.0001, 2, { hint: "Contre les rayures sur les surfaces eclairees." }),
];

export function optionsMessage() {
  return {
    type: "options",
    iniExists: true,
    resolutions: [[800, 600], [1280, 800], [1920, 1080]],
    tuneGroups: ["Image", "Surfaces", "Ombres", "Sans reglage"],
    tune: tuneRows,
    values: { resWidth: 1280, resHeight: 800, fullscreen: 1, fpsLimit: 90, vsync: 0, texture: 0, detail: 1, distant: 2, shadow: 2,
      weather: 1, night: 0, spellSfx: 1, itemSfx: 1, damage: 0, nameSelf: 1, nameOthers: 1, nameMonsters: 0, cameraLock: 1,
      freeZoom: 0, windowAlpha: 200, exposure: 1.2, fxaa: 1, aniso: 4, shadowbias: 0.0031 },
  };
}

export function newsMessage(items = [
  { date: "2026-03-07", tag: "contenu", title: "La citadelle du nord ouvre ses portes",
    summary: "Une region entiere, trois donjons et un port : la mise a jour de mars est la plus grande depuis l'ouverture.", url: "https://tolmira.example/nord" },
  { date: "2026-02-28", tag: "CORRECTIF", title: "Correctif du 28 fevrier", summary: "Les montures ne traversent plus les ponts." },
  { date: "2026-02-14", tag: "evenement", title: "La fete des lanternes", summary: "Jusqu'au 28, chaque village s'illumine a la tombee de la nuit.", url: "https://tolmira.example/lanternes" },
  { date: "2026-02-10", tag: "maintenance", title: "Maintenance des serveurs", summary: "Mercredi de 4 h a 7 h." },
  { date: "hier", tag: "concours", title: "Un titre fort long ".repeat(12), summary: "Un resume sans espace : " + "tresLong".repeat(60) },
]) {
  return { type: "news", ok: true, body: JSON.stringify({ items }) };
}
