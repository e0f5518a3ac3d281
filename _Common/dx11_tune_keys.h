#pragma once

#include <array>
#include <cstdint>

namespace patcher {

/// How the options page edits a render tuning value.
enum class TuneKind : std::int32_t {
  kSwitch = 0,  ///< on or off
  kSlider = 1,  ///< continuous
};

/// One setting of the game's renderer. All texts are ASCII without double quotes and backslashes, because
/// messages for the page contain them without escaping.
struct TuneDef {
  const char* key;  ///< key in the settings file and name in the page's messages
  float def;        ///< value if the file has none
  float min;
  float max;
  float step;  ///< step of the page's slider; values are not rounded to it
  TuneKind kind;
  std::int32_t group;  ///< index into DX11TuneGroups
  const char* label;
  const char* hint;  ///< help text below the label, or null
};

/// Section titles of the options page.
inline constexpr std::array<const char*, 8> DX11TuneGroups{
    "Image", "Surfaces", "Ombres", "Occlusion ambiante", "Atmosphere", "Eau", "Lampadaires", "Compatibilite",
};

/// The renderer's settings. Each row adds a setting to the page. The order of rows is the order within a
/// section of the page, and of the lines that a first save appends to the file.
inline constexpr std::array<TuneDef, 61> DX11TuneKeys{{
    {"exposure", 0.96f, 0.2f, 3, 0.01f, TuneKind::kSlider, 0, "Exposition",
     "Luminosite generale de la scene avant les couleurs."},
    {"contrast", 1.12f, 0.5f, 2, 0.01f, TuneKind::kSlider, 0, "Contraste", nullptr},
    {"saturation", 1.15f, 0, 2, 0.01f, TuneKind::kSlider, 0, "Saturation", "0 met l'image en noir et blanc."},
    {"temperature", 0, -1, 1, 0.01f, TuneKind::kSlider, 0, "Temperature",
     "Negatif = image froide (bleue), positif = chaude (orangee)."},
    {"bloomthresh", 0.8f, 0, 2, 0.01f, TuneKind::kSlider, 0, "Seuil du halo",
     "A partir de quelle luminosite une surface se met a rayonner."},
    {"bloomint", 0.2f, 0, 1, 0.01f, TuneKind::kSlider, 0, "Intensite du halo", nullptr},
    {"bloomknee", 0.85f, 0, 1, 0.01f, TuneKind::kSlider, 0, "Douceur du halo",
     "Plus c'est haut, plus l'entree dans le halo est progressive."},
    {"fxaa", 1, 0, 1, 1, TuneKind::kSwitch, 0, "Anticrenelage",
     "Adoucit les bords en escalier. Cout tres faible."},
    {"sfxint", 1, 0, 4, 0.05f, TuneKind::kSlider, 0, "Eclat des effets",
     "Multiplie la couleur des effets speciaux. Au-dessus de 1 ils depassent le blanc et nourrissent le halo "
     "au lieu de rester plats. 1 = rendu d'origine."},
    {"aniso", 14, 1, 16, 1, TuneKind::kSlider, 1, "Filtrage anisotrope",
     "1 = filtrage simple. Au-dessus, le sol et les routes restent nets au loin."},
    {"specint", 0.35f, 0, 2, 0.01f, TuneKind::kSlider, 1, "Intensite des reflets", nullptr},
    {"specpower", 24, 1, 128, 1, TuneKind::kSlider, 1, "Durete des reflets",
     "Haut = petit point brillant, bas = reflet large et diffus."},
    {"bumpstrength", 1.5f, 0, 4, 0.05f, TuneKind::kSlider, 1, "Relief des textures", nullptr},
    {"bumpdiffuse", 0.6f, 0, 2, 0.05f, TuneKind::kSlider, 1, "Relief sur la couleur",
     "Part du relief qui agit aussi sur la teinte, pas seulement sur les reflets."},
    {"shadowdark", 0.68f, 0, 1, 0.01f, TuneKind::kSlider, 2, "Clarte des ombres",
     "1 = aucune ombre. Plus c'est bas, plus elles sont sombres."},
    {"shadowbias", 0.002f, 0, 0.02f, 0.0001f, TuneKind::kSlider, 2, "Decalage des ombres",
     "Contre les rayures sur les surfaces eclairees. Trop haut, l'ombre se detache du pied."},
    {"casccount", 3, 0, 3, 1, TuneKind::kSlider, 2, "Cascades d'ombre",
     "0 supprime toute la passe d'ombre : c'est le plus gros gain de performance."},
    {"casc0", 64, 8, 400, 1, TuneKind::kSlider, 2, "Portee cascade proche",
     "En unites du monde. Plus petit = ombres plus nettes autour du personnage."},
    {"casc1", 220, 8, 1200, 1, TuneKind::kSlider, 2, "Portee cascade moyenne", nullptr},
    {"casc2", 800, 8, 4000, 1, TuneKind::kSlider, 2, "Portee cascade lointaine", nullptr},
    {"ssao", 1, 0, 1, 1, TuneKind::kSwitch, 3, "Occlusion ambiante",
     "Assombrit les creux et les jonctions entre objets."},
    {"ssaoradius", 0.2f, 0.05f, 3, 0.01f, TuneKind::kSlider, 3, "Rayon de l'occlusion",
     "Monte trop haut, elle deborde en aureole sombre autour des personnages."},
    {"ssaoint", 0.2f, 0, 2, 0.01f, TuneKind::kSlider, 3, "Intensite de l'occlusion", nullptr},
    {"ssaobias", 0.02f, 0, 0.2f, 0.001f, TuneKind::kSlider, 3, "Biais de l'occlusion",
     "Evite qu'une surface s'assombrisse elle-meme."},
    {"ssaopow", 2, 0.5f, 6, 0.1f, TuneKind::kSlider, 3, "Durete de l'occlusion", nullptr},
    {"fogscale", 2, 0.2f, 8, 0.05f, TuneKind::kSlider, 4, "Portee du brouillard",
     "1 = distances d'origine. Au-dessus, le brouillard recule et on voit plus loin."},
    {"fogsky", 1, 0, 1, 0.01f, TuneKind::kSlider, 4, "Brouillard couleur du ciel",
     "0 = couleur du soleil (rendu d'origine), 1 = couleur du ciel. Corrige l'horizon blanc."},
    {"skytint", 0.55f, 0, 1, 0.01f, TuneKind::kSlider, 4, "Teinte du ciel", nullptr},
    {"cloudamt", 0.45f, 0, 1, 0.01f, TuneKind::kSlider, 4, "Nuages : couverture",
     "0 = aucun nuage ajoute (ciel d'origine). Au-dessus, le ciel se couvre."},
    {"cloudspeed", 1, 0, 6, 0.05f, TuneKind::kSlider, 4, "Nuages : vitesse",
     "Derive des nuages. 0 les fige."},
    {"cloudsharp", 0.55f, 0, 1, 0.01f, TuneKind::kSlider, 4, "Nuages : nettete",
     "Bas = brume etalee, haut = nuages aux bords marques."},
    {"cloudscale", 2.2f, 0.3f, 8, 0.05f, TuneKind::kSlider, 4, "Nuages : taille",
     "Petit = grandes masses, grand = petits moutons."},
    {"cloudlight", 0.7f, 0, 2, 0.01f, TuneKind::kSlider, 4, "Nuages : eclairage",
     "Force du bord lumineux du cote du soleil."},
    {"sunhalo", 0.55f, 0, 2, 0.01f, TuneKind::kSlider, 4, "Halo du soleil",
     "Lueur atmospherique autour du soleil, calee sur sa vraie position."},
    {"toon", 0.5f, 0, 1, 0.01f, TuneKind::kSlider, 4, "Ombrage anime",
     "0 = eclairage continu d'origine, 1 = bandes franches facon dessin anime. Personnages seulement."},
    {"toonrim", 0.25f, 0, 2, 0.01f, TuneKind::kSlider, 4, "Lumiere de contour",
     "Lisere clair sur les bords a contre-jour."},
    {"toonwarm", 0.4f, 0, 1, 0.01f, TuneKind::kSlider, 4, "Chaleur des ombres",
     "Rechauffe les ombres de la peau, comme une lumiere qui la traverse."},
    {"waterrefl", 0.5f, 0, 1, 0.01f, TuneKind::kSlider, 5, "Reflet de l'eau",
     "Part de ciel reflechie quand on regarde la surface en rasant."},
    {"waterripple", 2, 0, 8, 0.05f, TuneKind::kSlider, 5, "Ondulation de l'eau", nullptr},
    {"wateralpha", 0.8f, 0, 1, 0.01f, TuneKind::kSlider, 5, "Opacite de l'eau",
     "Part de la couleur de l'eau au plus profond. Les bas-fonds laissent toujours voir le fond."},
    {"waterrefr", 24, 0, 80, 1, TuneKind::kSlider, 5, "Refraction de l'eau",
     "Deformation du fond vu a travers les vagues, en pixels. 0 = fond vu droit."},
    {"waterdepth", 40, 2, 200, 1, TuneKind::kSlider, 5, "Profondeur de l'eau",
     "Epaisseur d'eau (unites du monde) au-dela de laquelle le fond disparait. Petit = eau trouble, grand = "
     "eau claire."},
    {"waterfoam", 6, 0, 30, 0.5f, TuneKind::kSlider, 5, "Ecume de rive",
     "Largeur de la bande d'ecume le long des berges. 0 = aucune."},
    {"waterspec", 1, 0, 4, 0.05f, TuneKind::kSlider, 5, "Eclat du soleil",
     "Reflet brillant du soleil sur les vagues. 0 = eteint."},
    {"waterscale", 48, 8, 256, 1, TuneKind::kSlider, 5, "Taille des vagues",
     "Unites du monde par motif de vagues. Petit = clapot serre, grand = houle large."},
    {"waterspeed", 1, 0, 4, 0.05f, TuneKind::kSlider, 5, "Vitesse des vagues", "0 = surface figee."},
    {"wateredge", 3, 0.1f, 20, 0.1f, TuneKind::kSlider, 5, "Fondu de rive",
     "Epaisseur d'eau sur laquelle la surface apparait en douceur le long de la cote."},
    {"grassamt", 1, 0, 3, 0.05f, TuneKind::kSlider, 1, "Densite de l'herbe",
     "Brins par metre carre sur les sols herbeux. 0 = aucune herbe (comme avant)."},
    {"grassrange", 160, 40, 400, 5, TuneKind::kSlider, 1, "Portee de l'herbe",
     "Distance a laquelle l'herbe pousse autour de la camera, en unites du monde. Le cout grandit avec le "
     "carre."},
    {"grassheight", 1, 0.3f, 3, 0.05f, TuneKind::kSlider, 1, "Hauteur de l'herbe", nullptr},
    {"grasswind", 1, 0, 3, 0.05f, TuneKind::kSlider, 1, "Vent dans l'herbe", "0 = brins immobiles."},
    {"grassbright", 1.4f, 0.5f, 2.5f, 0.05f, TuneKind::kSlider, 1, "Eclat de l'herbe",
     "Luminosite des brins par rapport a la couleur du sol qu'ils habillent."},
    {"lampint", 1, 0, 4, 0.05f, TuneKind::kSlider, 6, "Eclat des lampadaires",
     "0 = eteints. Chaque lampe allumee est une vraie lumiere calculee par pixel : dans une ville, ca se "
     "paie."},
    {"lamprange", 32, 4, 128, 1, TuneKind::kSlider, 6, "Portee des lampadaires",
     "Rayon de la flaque de lumiere, en unites du monde."},
    {"lampheight", 0.88f, 0, 1, 0.01f, TuneKind::kSlider, 6, "Hauteur du foyer",
     "Fraction de la hauteur du mat : 0.88 place la lanterne juste sous le sommet."},
    {"playerlight", 1.2f, 0, 4, 0.05f, TuneKind::kSlider, 6, "Clarte autour du joueur",
     "Halo qui suit le personnage la nuit, pour se reperer. 0 = nuit noire d'origine."},
    {"playerrange", 80, 8, 250, 1, TuneKind::kSlider, 6, "Portee autour du joueur",
     "Rayon eclaire, en unites du monde. Un terrain fait 512 de cote."},
    {"tess", 0, 0, 1, 1, TuneKind::kSwitch, 7, "Tessellation du terrain",
     "0 revient au maillage d'origine, moins dense."},
    {"dqs", 1, 0, 1, 1, TuneKind::kSwitch, 7, "Peau par quaternions",
     "0 revient au melange lineaire : les epaules et poignets qui vrillent se pincent."},
    {"nativetex", 1, 0, 1, 1, TuneKind::kSwitch, 7, "Chargement natif des textures",
     "0 revient a l'ancien chemin de chargement."},
    {"fontatlas", 1, 0, 1, 1, TuneKind::kSwitch, 7, "Atlas de police natif",
     "Demande de relancer le jeu pour prendre effet."},
}};

}  // namespace patcher
